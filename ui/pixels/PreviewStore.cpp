#include "ui/pixels/PreviewStore.h"

#include "diag/BufferUsage.h"
#include "ui/pixels/PreviewGeometry.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

// The pixel at another scale that lies under the middle of this one.
int32_t MapPixel(int32_t pixel, double fromScale, double toScale) {
    return static_cast<int32_t>(std::floor((pixel + 0.5) / fromScale * toScale));
}

void CopyRows(const PixelStore &from, const IntRect &area, PixelStore *to) {
    for (int32_t y = area.top; y < area.bottom; ++y) {
        const uint32_t *in = PixelAt(from, area.left, y);
        uint32_t *out = PixelAt(*to, area.left, y);
        for (int32_t x = area.left; x < area.right; ++x, ++in, ++out)
            *out = *in ? *in : *out;
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

void CopyStore(const PixelStore &from, PixelStore *to) {
    if (!from.pixels || !to->pixels)
        return;
    if (from.scale == to->scale)
        CopyRows(from, IntersectRects(from.bounds, to->bounds), to);
    else
        ResampleStore(from, to->bounds, kNeverCancelled, to);
}

bool ResampleStore(const PixelStore &from, const IntRect &part, const std::atomic<uint8_t> &cancel,
                   PixelStore *to) {
    const IntRect area = IntersectRects(part, to->bounds);
    for (int32_t y = area.top; from.pixels && y < area.bottom; ++y) {
        if (cancel.load(std::memory_order_relaxed) != 0)
            return false;
        const int32_t fromY = MapPixel(y, to->scale, from.scale);
        if (fromY < from.bounds.top || fromY >= from.bounds.bottom)
            continue;
        for (int32_t x = area.left; x < area.right; ++x) {
            const int32_t fromX = MapPixel(x, to->scale, from.scale);
            if (!RectContains(from.bounds, fromX, fromY))
                continue;
            if (const uint32_t pixel = *PixelAt(from, fromX, fromY))
                *PixelAt(*to, x, y) = pixel;
        }
    }
    return true;
}
