#include "ui/preview/PreviewInvariants.h"

#include "diag/ErrorReport.h"
#include "ui/pixels/PreviewGeometry.h"
#include "ui/preview/PreviewProxies.h"

namespace {

#ifdef NDEBUG
constexpr bool kCheckFromStart = false;
#else
constexpr bool kCheckFromStart = true;
#endif

constexpr uint32_t kSiteInvariant = 888;

void Expect(bool holds, const char *text) {
    if (holds)
        return;
    ++gPreviewFaults;
    ReportError({kSiteInvariant, kDebugMessage, 0}, kStopIcon, kTitleUnexpected, "%s", text);
}

HRGN LayerRegion() {
    return gProxies.previous.previewOn ? gProxies.ValidEffectProxyRegion : gProxies.ValidHostProxyRegion;
}

void CheckScaledRegion() {
    HRGN layer = ScaleRegion(LayerRegion(), gProxies.renderingZoom);
    Expect(!layer || RegionHolds(layer, gProxies.ValidScaledProxyRegion),
           "ValidScaledProxyRegion has pixels whose effect is not valid.");
    DeleteRegion(&layer);
    Expect(RegionHolds(gProxies.ScaledProxyRegion, gProxies.ValidScaledProxyRegion),
           "ValidScaledProxyRegion reaches out of ScaledProxyRegion.");
}

// What a fresh pixel shows is valid.
void CheckFreshRegion() {
    const double zoom = gProxies.previous.zoom;
    HRGN under = zoom < kFullZoom ? UnscaleRegion(gProxies.FreshRegion, zoom) : nullptr;
    HRGN image = under ? CreateRectRgn(0, 0, 0, 0) : nullptr;
    if (image && CombineRgn(image, under, gProxies.ValidHostProxyRegion, RGN_AND) != ERROR)
        Expect(RegionHolds(gProxies.ValidScaledProxyRegion, image),
               "FreshRegion has pixels made from what is not valid.");
    if (!under)
        Expect(RegionHolds(gProxies.ValidScaledProxyRegion, gProxies.FreshRegion),
               "FreshRegion reaches out of ValidScaledProxyRegion.");
    DeleteRegion(&image);
    DeleteRegion(&under);
}

// Every fresh pixel has been put into the scaled proxy.
void CheckStore() {
    const PixelStore &store = gProxies.scaledProxy;
    RegionRects rects{};
    if (!store.pixels || !GetRegionRects(gProxies.FreshRegion, &rects))
        return;
    bool isFilled = true;
    const int64_t width = int64_t{store.bounds.right} - store.bounds.left;
    for (uint32_t i = 0; i < rects.count; ++i) {
        const RECT &r = rects.rects[i];
        const IntRect part = StoreBounds({r.left, r.top, r.right, r.bottom}, gProxies.previous.zoom);
        for (int32_t y = part.top; y < part.bottom; ++y)
            for (int32_t x = part.left; x < part.right; ++x)
                isFilled = isFilled && RectContains(store.bounds, x, y) &&
                           store.pixels[(y - store.bounds.top) * width + (x - store.bounds.left)] != 0;
    }
    FreeRegionRects(&rects);
    Expect(isFilled, "The scaled proxy has nothing where FreshRegion says so.");
}

} // namespace

std::atomic<bool> gCheckPreview{kCheckFromStart};
std::atomic<uint32_t> gPreviewChecks, gPreviewFaults;

void CheckPreview() {
    if (!gCheckPreview || !gProxies.hasPrevious)
        return;
    ++gPreviewChecks;
    Expect(RegionHolds(gProxies.ValidHostProxyRegion, gProxies.ValidEffectProxyRegion),
           "ValidEffectProxyRegion reaches out of ValidHostProxyRegion.");
    CheckScaledRegion();
    CheckFreshRegion();
    CheckStore();
}
