#include "ui/preview/PreviewPreparation.h"

#include "diag/ErrorReport.h"
#include "ui/pixels/PreviewGeometry.h"
#include "ui/preview/PreviewInvariants.h"
#include "ui/preview/PreviewProxies.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

constexpr IntRect kNothing = {0, 0, 0, 0};

constexpr RegionStep kEmptyEffect{681, "Could not set rectangle into ValidEffectProxyRegion."};
constexpr RegionStep kLimitEffect{684, "Could not combine ValidHostProxyRegion with ValidEffectProxyRegion."};
constexpr RegionStep kEmptyScaled{793, "Could not set rectangle into ValidScaledProxyRegion."};
constexpr RegionStep kSetWindow{832, "Could not set rectangle into ScaledProxyRegion."};
constexpr RegionStep kSetTemp{835, "Could not set rectangle into TempRegion."};
constexpr RegionStep kLimitTemp{838, "Could not combine TempRegion with ScaledProxyRegion."};
constexpr RegionStep kLimitScaled{841, "Could not combine ValidScaledProxyRegion with TempRegion."};
constexpr RegionStep kLimitToEffect{850,
                                    "Could not combine ValidScaledProxyRegion with ValidEffectProxyRegion."};
constexpr RegionStep kLimitToScaledEffect{
    858, "Could not combine ValidScaledProxyRegion with ValidScaledEffectProxyRegion."};
constexpr RegionStep kLimitToHost{853, "Could not combine ValidScaledProxyRegion with ValidHostProxyRegion."};
constexpr RegionStep kLimitToScaledHost{
    861, "Could not combine ValidScaledProxyRegion with ValidScaledHostProxyRegion."};
constexpr RegionStep kSetFresh{862, "Could not set rectangle into FreshRegion."};
constexpr RegionStep kLimitFresh{865, "Could not combine FreshRegion with TempRegion."};
constexpr RegionStep kFindStale{868, "Could not combine TempRegion with ValidScaledProxyRegion."};
constexpr uint32_t kSiteStore = 870;

// What the scaled proxy may take, so that with a copy of itself while its window moves, and with the effect
// image, it stays within twice the host's image and 100 MB.
constexpr int64_t kFixedBudget = 80000000;
constexpr double kWholeMargin = 1.0, kSmallestMargin = 0.05;

bool SameRect(const IntRect &a, const IntRect &b) {
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

bool HoldsRect(const IntRect &outer, const IntRect &inner) {
    return IsEmptyRect(inner) || SameRect(IntersectRects(outer, inner), inner);
}

// A window that ended at an edge of the image still does.
bool ReachesSameEdges(const IntRect &window, const IntRect &before, const IntRect &now) {
    return (window.left != before.left || window.left == now.left) &&
           (window.top != before.top || window.top == now.top) &&
           (window.right != before.right || window.right == now.right) &&
           (window.bottom != before.bottom || window.bottom == now.bottom);
}

// Measured from where the window was made, so that it follows a slow pan too.
bool CanKeepWindow(const PreviewRequest &request, const PreviewGeometry &geometry) {
    const PreviewRequest &made = gProxies.windowOf;
    if (!gProxies.hasPrevious || request.zoom != made.zoom || !SameRect(request.display, made.display))
        return false;
    if (request.centerX == made.centerX && request.centerY == made.centerY)
        return true;
    const int32_t width = request.display.right - request.display.left;
    const int32_t height = request.display.bottom - request.display.top;
    const IntRect shown = IntersectRects(VisibleRect(geometry), ScaledImage(geometry));
    const int64_t movedX = std::abs(int64_t{request.centerX} - made.centerX);
    const int64_t movedY = std::abs(int64_t{request.centerY} - made.centerY);
    return 2 * movedX < width && 2 * movedY < height &&
           ReachesSameEdges(gProxies.window, made.image, request.image) && HoldsRect(gProxies.window, shown);
}

int64_t StoreBytes(const IntRect &window, double zoom) {
    const IntRect bounds = StoreBounds(window, zoom);
    return (int64_t{bounds.right} - bounds.left) * (int64_t{bounds.bottom} - bounds.top) * 4;
}

IntRect AffordableWindow(const PreviewGeometry &geometry) {
    const int64_t budget = (gProxies.HostProxyImage.pixelBytes + kFixedBudget) / 2;
    double margin = kWholeMargin;
    IntRect window = WindowAroundView(geometry, margin);
    while (StoreBytes(window, geometry.zoom) > budget && margin > kSmallestMargin) {
        margin /= 2;
        window = WindowAroundView(geometry, margin);
    }
    return window;
}

// The window in rendered pixels.
IntRect RenderedWindow(const IntRect &window, double zoom) {
    if (zoom >= kFullZoom)
        return window;
    const IntRect image = IntersectRects(UnscaleRect(window, zoom), gProxies.HostProxyImage.bounds);
    return IsEmptyRect(image) ? UnscaleRect(window, zoom) : image;
}

void MoveWindow(const PreviewRequest &request, const PreviewGeometry &geometry) {
    gProxies.window = AffordableWindow(geometry);
    gProxies.windowOf = request;
    const IntRect rendered = RenderedWindow(gProxies.window, request.zoom);
    SetRegionRect(gProxies.ScaledProxyRegion, rendered, kSetWindow);
    SetRegionRect(gProxies.TempRegion, rendered, kSetTemp);
    CombineRegions(gProxies.TempRegion, gProxies.TempRegion, gProxies.ScaledProxyRegion, RGN_AND, kLimitTemp);
    CombineRegions(gProxies.ValidScaledProxyRegion, gProxies.ValidScaledProxyRegion, gProxies.TempRegion,
                   RGN_AND, kLimitScaled);
}

// What of the scaled proxy is made from pixels that are still valid, in the layer that is shown.
void RestrictToLayer(const PreviewRequest &request, double renderingZoom) {
    const HRGN layer = request.previewOn ? gProxies.ValidEffectProxyRegion : gProxies.ValidHostProxyRegion;
    const HRGN scaled = gProxies.ValidScaledProxyRegion;
    if (renderingZoom == kFullZoom) {
        CombineRegions(scaled, scaled, layer, RGN_AND, request.previewOn ? kLimitToEffect : kLimitToHost);
        return;
    }
    HRGN scaledLayer = ScaleRegion(layer, renderingZoom);
    CombineRegions(scaled, scaled, scaledLayer, RGN_AND,
                   request.previewOn ? kLimitToScaledEffect : kLimitToScaledHost);
    DeleteRegion(&scaledLayer);
}

void UpdateEffect(const PreviewRequest &request) {
    if (request.previewOn && !(gProxies.hasEffect && SameEffect(gProxies.effectOf, request))) {
        SetRegionRect(gProxies.ValidEffectProxyRegion, kNothing, kEmptyEffect);
        gProxies.effectOf = request;
        gProxies.hasEffect = true;
        gProxies.isStarBoxKnown = false;
    }
    CombineRegions(gProxies.ValidEffectProxyRegion, gProxies.ValidHostProxyRegion,
                   gProxies.ValidEffectProxyRegion, RGN_AND, kLimitEffect);
}

// Pixels of the scaled proxy stay fresh while the scale is the same and all under them is valid.
void UpdateFresh(const PreviewRequest &request) {
    if (!gProxies.hasPrevious || gProxies.previous.zoom != request.zoom ||
        gProxies.previous.previewOn != request.previewOn) {
        SetRegionRect(gProxies.FreshRegion, kNothing, kSetFresh);
        return;
    }
    SetRegionRect(gProxies.TempRegion, gProxies.window, kSetTemp);
    CombineRegions(gProxies.FreshRegion, gProxies.FreshRegion, gProxies.TempRegion, RGN_AND, kLimitFresh);
    CombineRegions(gProxies.TempRegion, gProxies.ScaledProxyRegion, gProxies.ValidScaledProxyRegion, RGN_DIFF,
                   kFindStale);
    HRGN stale = request.zoom < kFullZoom ? ScaleRegion(gProxies.TempRegion, request.zoom) : nullptr;
    CombineRegions(gProxies.FreshRegion, gProxies.FreshRegion, stale ? stale : gProxies.TempRegion, RGN_DIFF,
                   kLimitFresh);
    DeleteRegion(&stale);
}

void PrepareRegions(const PreviewRequest &request, const PreviewGeometry &geometry) {
    const double renderingZoom = RenderingZoom(request.zoom);
    const bool isFirst = !gProxies.hasPrevious;
    UpdateEffect(request);
    if (isFirst || renderingZoom != gProxies.renderingZoom ||
        request.previewOn != gProxies.previous.previewOn)
        SetRegionRect(gProxies.ValidScaledProxyRegion, kNothing, kEmptyScaled);
    if (!CanKeepWindow(request, geometry))
        MoveWindow(request, geometry);
    RestrictToLayer(request, renderingZoom);
    UpdateFresh(request);
    gProxies.previous = request;
    gProxies.renderingZoom = renderingZoom;
    gProxies.hasPrevious = true;
}

void ForgetPictures() {
    if (gProxies.scaledProxy.pixels)
        memset(gProxies.scaledProxy.pixels, 0, gProxies.scaledProxy.bytes);
    FreeStore(&gProxies.draft);
}

// Puts a scaled proxy for the window in the place of the one there is. What that shows is taken over, even
// from another zoom, until something better is there; of another zoom only what is in view. When cancelled
// the old one stays: the next request comes here again.
void ReplaceStore(const IntRect &bounds, double scale, const IntRect &inView,
                  const std::atomic<uint8_t> &cancel) {
    PixelStore store{}, before{};
    if (!AllocateStore(bounds, scale, &store)) {
        ReportError({kSiteStore, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "Could not (re)create the scaled proxy.");
        return;
    }
    bool isCopied = true;
    if (gProxies.scaledProxy.scale == scale)
        CopyStore(gProxies.scaledProxy, &store);
    else
        isCopied = ResampleStore(gProxies.scaledProxy, inView, cancel, &store);
    if (isCopied && LockPreview()) {
        before = gProxies.scaledProxy;
        gProxies.scaledProxy = store;
        UnlockPreview();
    } else {
        before = store;
    }
    FreeStore(&before);
}

void PrepareStore(const PreviewRequest &request, const std::atomic<uint8_t> &cancel) {
    const IntRect bounds = StoreBounds(gProxies.window, request.zoom);
    const double scale = StoreScale(request.zoom);
    const PixelStore &store = gProxies.scaledProxy;
    if (!store.pixels || store.scale != scale || !SameRect(store.bounds, bounds))
        ReplaceStore(bounds, scale, StoreBounds(VisibleRect(GeometryOfRequest(request)), request.zoom),
                     cancel);
}

} // namespace

void PreparePreview(const PreviewRequest &request, const std::atomic<uint8_t> &cancel) {
    if (!LockPreview())
        return;
    const bool showedPhotograph = !ShowsEffectsOnly();
    PrepareRegions(request, GeometryOfRequest(request));
    if (showedPhotograph && ShowsEffectsOnly())
        ForgetPictures();
    UnlockPreview();
    PrepareStore(request, cancel);
    if (!LockPreview())
        return;
    CheckPreview();
    UnlockPreview();
}
