#include "ui/pixels/PreviewStore.h"

#include "diag/BufferUsage.h"
#include "ui/pixels/PreviewGeometry.h"
#include "ui/pixels/PreviewReduction.h"
#include "ui/pixels/PreviewSamples.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

size_t StoreWidth(const PixelStore &store) {
    return static_cast<size_t>(store.bounds.right - store.bounds.left);
}

// The pixel of column x in row y; both lie in the bounds.
uint32_t *PixelAt(const PixelStore &store, int32_t x, int32_t y) {
    return store.pixels + static_cast<size_t>(y - store.bounds.top) * StoreWidth(store) +
           static_cast<size_t>(x - store.bounds.left);
}

// The pixel at another scale that lies under the middle of this one.
int32_t MapPixel(int32_t pixel, double fromScale, double toScale) {
    return static_cast<int32_t>(std::floor((pixel + 0.5) / fromScale * toScale));
}

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

void CopyRows(const PixelStore &from, const IntRect &area, PixelStore *to) {
    for (int32_t y = area.top; y < area.bottom; ++y) {
        const uint32_t *in = PixelAt(from, area.left, y);
        uint32_t *out = PixelAt(*to, area.left, y);
        for (int32_t x = area.left; x < area.right; ++x, ++in, ++out)
            *out = *in ? *in : *out;
    }
}

void CopyNearest(const PixelStore &from, PixelStore *to) {
    for (int32_t y = to->bounds.top; y < to->bounds.bottom; ++y) {
        const int32_t fromY = MapPixel(y, to->scale, from.scale);
        if (fromY < from.bounds.top || fromY >= from.bounds.bottom)
            continue;
        for (int32_t x = to->bounds.left; x < to->bounds.right; ++x) {
            const int32_t fromX = MapPixel(x, to->scale, from.scale);
            if (!RectContains(from.bounds, fromX, fromY))
                continue;
            if (const uint32_t pixel = *PixelAt(from, fromX, fromY))
                *PixelAt(*to, x, y) = pixel;
        }
    }
}

} // namespace

double StoreScale(double zoom) {
    return std::min(zoom, kFullZoom);
}

IntRect StoreBounds(const IntRect &scaledPart, double zoom) {
    return zoom > kFullZoom ? UnscaleRect(scaledPart, zoom) : scaledPart;
}

bool AllocateStore(const IntRect &bounds, double scale, PixelStore *store) {
    if (IsEmptyRect(bounds))
        return false;
    const auto width = static_cast<size_t>(int64_t{bounds.right} - bounds.left);
    const auto height = static_cast<size_t>(int64_t{bounds.bottom} - bounds.top);
    const size_t bytes = width * height * sizeof(uint32_t);
    auto *pixels = static_cast<uint32_t *>(CountedAlloc(bytes));
    if (!pixels)
        return false;
    memset(pixels, 0, bytes);
    *store = PixelStore{bounds, scale, pixels, bytes};
    return true;
}

void FreeStore(PixelStore *store) {
    CountedFree(store->pixels, store->bytes);
    *store = PixelStore{};
}

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

void CopyStore(const PixelStore &from, PixelStore *to) {
    if (!from.pixels || !to->pixels)
        return;
    if (from.scale == to->scale)
        CopyRows(from, IntersectRects(from.bounds, to->bounds), to);
    else
        CopyNearest(from, to);
}
