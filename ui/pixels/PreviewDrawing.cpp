#include "ui/pixels/PreviewDrawing.h"

#include "ui/pixels/PreviewGeometry.h"
#include "ui/pixels/PreviewSamples.h"

#include <algorithm>
#include <cmath>

namespace {

// Columns are mapped once for a strip of at most so many.
constexpr int32_t kStripWidth = 512;

// What the drawing of one strip needs; positions of its columns.
struct Strip {
    const PixelStore &store;
    const ImageBuffer &image;
    bool showsImage;
    double zoom;
    int32_t count;
    int32_t storeColumn[kStripWidth]; // offset in a store row, or -1
    int32_t imageColumn[kStripWidth]; // offset in an image row
};

double DocumentPosition(int32_t scaled, double zoom) {
    return (scaled + 0.5) * kFullZoom / zoom;
}

int32_t StorePosition(double document, const PixelStore &store) {
    return static_cast<int32_t>(std::floor(document * store.scale / kFullZoom));
}

int32_t ImagePosition(double document, int32_t low, int32_t high) {
    return std::clamp(static_cast<int32_t>(std::floor(document)), low, high - 1) - low;
}

void MapColumns(int32_t left, Strip *strip) {
    const IntRect &bounds = strip->store.bounds;
    for (int32_t i = 0; i < strip->count; ++i) {
        const double document = DocumentPosition(left + i, strip->zoom);
        const int32_t column = StorePosition(document, strip->store);
        strip->storeColumn[i] = column >= bounds.left && column < bounds.right ? column - bounds.left : -1;
        strip->imageColumn[i] = ImagePosition(document, strip->image.bounds.left, strip->image.bounds.right);
    }
}

void ClearRow(const Strip &strip, uint32_t *out) {
    std::fill_n(out, strip.count, 0u);
}

void DrawStoreRow(const Strip &strip, int32_t storeRow, uint32_t *out) {
    const IntRect &bounds = strip.store.bounds;
    const uint32_t *row =
        strip.store.pixels + int64_t{storeRow - bounds.top} * (int64_t{bounds.right} - bounds.left);
    for (int32_t i = 0; i < strip.count; ++i)
        out[i] = strip.storeColumn[i] >= 0 ? row[strip.storeColumn[i]] : 0;
}

// The pixel under the middle, wherever nothing has been drawn.
template <typename Sample> void DrawImageRow(const Strip &strip, int32_t imageRow, uint32_t *out) {
    const ColorRows<Sample> rows = RowsAt<Sample>(strip.image, imageRow);
    for (int32_t i = 0; i < strip.count; ++i) {
        const int32_t x = strip.imageColumn[i];
        if (out[i] == 0)
            out[i] = ScreenPixel(ScreenSample(rows.channel[0][x]), ScreenSample(rows.channel[1][x]),
                                 ScreenSample(rows.channel[2][x]));
    }
}

void FillFromImage(const Strip &strip, int32_t imageRow, uint32_t *out) {
    if (std::find(out, out + strip.count, 0u) == out + strip.count)
        return;
    if (strip.image.bytesPerSample == 1)
        DrawImageRow<uint8_t>(strip, imageRow, out);
    else if (strip.image.bytesPerSample == 2)
        DrawImageRow<uint16_t>(strip, imageRow, out);
    else
        DrawImageRow<float>(strip, imageRow, out);
}

void DrawStrip(const Strip &strip, int32_t top, int32_t bottom, uint32_t *pixels, int32_t stride) {
    const IntRect &bounds = strip.store.bounds, &image = strip.image.bounds;
    int32_t previousRow = -1;
    for (int32_t y = top; y < bottom; ++y, pixels += stride) {
        const double document = DocumentPosition(y, strip.zoom);
        const int32_t imageRow = ImagePosition(document, image.top, image.bottom) + image.top;
        // When the image is enlarged, a row often repeats the one above it.
        if (y > top && strip.zoom >= kFullZoom && imageRow == previousRow) {
            std::copy_n(pixels - stride, strip.count, pixels);
            continue;
        }
        previousRow = imageRow;
        const int32_t storeRow = strip.store.pixels ? StorePosition(document, strip.store) : 0;
        if (strip.store.pixels && storeRow >= bounds.top && storeRow < bounds.bottom)
            DrawStoreRow(strip, storeRow, pixels);
        else
            ClearRow(strip, pixels);
        if (strip.showsImage)
            FillFromImage(strip, imageRow, pixels);
    }
}

void OverlayStrip(const Strip &strip, int32_t top, int32_t bottom, uint32_t *pixels, int32_t stride) {
    uint32_t drawn[kStripWidth];
    for (int32_t y = top; y < bottom; ++y, pixels += stride) {
        const int32_t row = StorePosition(DocumentPosition(y, strip.zoom), strip.store);
        if (row < strip.store.bounds.top || row >= strip.store.bounds.bottom)
            continue;
        DrawStoreRow(strip, row, drawn);
        for (int32_t i = 0; i < strip.count; ++i)
            pixels[i] = drawn[i] ? drawn[i] : pixels[i];
    }
}

} // namespace

void DrawStore(const PixelStore &store, const ImageBuffer &image, bool showsImage, double zoom,
               const IntRect &part, uint32_t *pixels, int32_t stride) {
    Strip strip{store, image, showsImage, zoom, 0, {}, {}};
    for (int32_t left = part.left; left < part.right; left += kStripWidth) {
        strip.count = std::min(kStripWidth, part.right - left);
        MapColumns(left, &strip);
        DrawStrip(strip, part.top, part.bottom, pixels + (left - part.left), stride);
    }
}

void OverlayStore(const PixelStore &store, const ImageBuffer &image, double zoom, const IntRect &part,
                  uint32_t *pixels, int32_t stride) {
    if (!store.pixels)
        return;
    Strip strip{store, image, false, zoom, 0, {}, {}};
    for (int32_t left = part.left; left < part.right; left += kStripWidth) {
        strip.count = std::min(kStripWidth, part.right - left);
        MapColumns(left, &strip);
        OverlayStrip(strip, part.top, part.bottom, pixels + (left - part.left), stride);
    }
}
