#include "ui/pixels/PreviewFilling.h"

#include "ui/pixels/PreviewGeometry.h"
#include "ui/pixels/PreviewReduction.h"
#include "ui/pixels/PreviewSamples.h"

namespace {

template <typename Sample>
bool ConvertRows(const ImageBuffer &image, const std::atomic<uint8_t> &cancel, PixelStore *store) {
    const IntRect area = IntersectRects(image.bounds, store->bounds);
    for (int32_t y = area.top; y < area.bottom; ++y) {
        if (cancel.load(std::memory_order_relaxed) != 0)
            return false;
        const ColorRows<Sample> rows = RowsAt<Sample>(image, y);
        uint32_t *out = PixelAt(*store, area.left, y);
        for (int32_t x = area.left - image.bounds.left; x < area.right - image.bounds.left; ++x)
            *out++ = ScreenPixel(ScreenSample(rows.channel[0][x]), ScreenSample(rows.channel[1][x]),
                                 ScreenSample(rows.channel[2][x]));
    }
    return true;
}

} // namespace

bool FillStore(const ImageBuffer &image, const std::atomic<uint8_t> &cancel, PixelStore *store) {
    if (store->scale < kFullZoom)
        return ReduceImage(image, cancel, store);
    switch (image.bytesPerSample) {
    case 1:
        return ConvertRows<uint8_t>(image, cancel, store);
    case 2:
        return ConvertRows<uint16_t>(image, cancel, store);
    default:
        return ConvertRows<float>(image, cancel, store);
    }
}
