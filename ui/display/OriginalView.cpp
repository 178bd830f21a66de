#include "ui/display/OriginalView.h"

#include "ui/pixels/PreviewDrawing.h"
#include "ui/pixels/PreviewFilling.h"
#include "ui/preview/PreviewImages.h"
#include "ui/preview/PreviewProxies.h"

namespace {

// Image pixels that are averaged within the time of a painting; of more, samples are shown.
constexpr double kMostAveraged = 6e7;

bool SameRect(const IntRect &a, const IntRect &b) {
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

// The task matches colours with contexts that are its own.
void MatchOriginal(PixelStore *store) {
    const TileBitmapHeader &described = gProxies.tileBitmap.description;
    if (described.header.bV5ProfileSize == 0)
        return;
    TileBitmap matcher{};
    CreateTileBitmap(nullptr, described.profile, described.header.bV5ProfileSize, &matcher);
    MatchColors(matcher, store);
    DeleteTileBitmap(&matcher);
}

double PixelsUnder(const IntRect &bounds, double scale) {
    return double(bounds.right - bounds.left) * (bounds.bottom - bounds.top) * (kFullZoom / scale) *
           (kFullZoom / scale);
}

// The view's part of the image at its zoom, as the task would show it. The image itself does not change.
void NeedOriginal(const PreviewGeometry &geometry) {
    PixelStore &kept = gProxies.original;
    const double scale = StoreScale(geometry.zoom);
    const IntRect visible = IntersectRects(VisibleRect(geometry), ScaledImage(geometry));
    const IntRect bounds = StoreBounds(visible, geometry.zoom);
    if (kept.pixels && kept.scale == scale && SameRect(kept.bounds, bounds))
        return;
    FreeStore(&kept);
    if (PixelsUnder(bounds, scale) > kMostAveraged || !AllocateStore(bounds, scale, &kept))
        return;
    if (FillStore(gProxies.HostProxyImage, kNeverCancelled, &kept))
        MatchOriginal(&kept);
    else
        FreeStore(&kept);
}

void DrawOriginal(const PreviewGeometry &geometry, const IntRect &part, uint32_t *pixels) {
    DrawStore(gProxies.original, gProxies.HostProxyImage, true, geometry.zoom, part, pixels, kTileBitmapSide);
}

} // namespace

bool PaintOriginalImage(HDC dc, const IntRect &part, const PreviewGeometry &geometry) {
    if (!gProxies.HostProxyImage.pixels)
        return false;
    NeedOriginal(geometry);
    return PaintImageWith(DrawOriginal, dc, part, geometry);
}
