#include "ui/preview/PreviewProxies.h"

#include "diag/BufferUsage.h"
#include "diag/ErrorReport.h"
#include "ui/pixels/PreviewGeometry.h"

PreviewProxies gProxies;

namespace {

constexpr RegionStep kCreateWork{383, "Could not create WorkRegion."};
constexpr RegionStep kCreateInvalidateDisplay{388, "Could not create InvalidateDisplayRegion."};
constexpr RegionStep kCreateValidScaled{393, "Could not create ValidScaledProxyRegion."};
constexpr RegionStep kCreateInvalidWork{398, "Could not create InvalidWorkRegion."};
constexpr RegionStep kCreateTemp{403, "Could not create TempRegion."};
constexpr RegionStep kCreateScaled{407, "Could not create ScaledProxyRegion."};
constexpr RegionStep kCreateFresh{410, "Could not create FreshRegion."};
constexpr RegionStep kCreateValidEffect{652, "Could not create ValidEffectProxyRegion."};
constexpr RegionStep kCreateValidHost{657, "Could not create ValidHostProxyRegion."};
constexpr RegionStep kEmptyValidHost{660, "Could not set empty rectangle into ValidHostProxyRegion."};
constexpr RegionStep kSetValidHost{664, "Could not set HostProxyImage rectangle into ValidHostProxyRegion."};
constexpr RegionStep kSetRectToInvalidate{701, "Could not set RectToInvalidate into TempRegion."};
constexpr RegionStep kCutEffect{704, "Could not combine ValidEffectProxyRegion with RegionToInvalidate."};
constexpr RegionStep kCutScaled{707, "Could not combine ValidScaledProxyRegion with RegionToInvalidate."};
constexpr RegionStep kCutFresh{710, "Could not combine FreshRegion with RegionToInvalidate."};

constexpr uint32_t kSiteMutex = 367, kSiteEffectImage = 673;

void CutRect(HRGN region, const IntRect &rect, const RegionStep &step) {
    if (SetRegionRect(gProxies.TempRegion, rect, kSetRectToInvalidate))
        CombineRegions(region, region, gProxies.TempRegion, RGN_DIFF, step);
}

void CreateProxyRegions() {
    gProxies.WorkRegion = CreateRegion(kCreateWork);
    gProxies.InvalidateDisplayRegion = CreateRegion(kCreateInvalidateDisplay);
    gProxies.ValidScaledProxyRegion = CreateRegion(kCreateValidScaled);
    gProxies.InvalidWorkRegion = CreateRegion(kCreateInvalidWork);
    gProxies.TempRegion = CreateRegion(kCreateTemp);
    gProxies.ScaledProxyRegion = CreateRegion(kCreateScaled);
    gProxies.FreshRegion = CreateRegion(kCreateFresh);
}

// All of the host's pixels are in memory before the dialog opens; until they are taken over none is valid.
void TakeHostImage(const ImageBuffer &host) {
    SetRegionRect(gProxies.ValidHostProxyRegion, {0, 0, 0, 0}, kEmptyValidHost);
    gProxies.HostProxyImage = host;
    SetRegionRect(gProxies.ValidHostProxyRegion, host.bounds, kSetValidHost);
}

} // namespace

bool LockPreview() {
    return gProxies.mutex && WaitForSingleObject(gProxies.mutex, INFINITE) != WAIT_FAILED;
}

void UnlockPreview() {
    ReleaseMutex(gProxies.mutex);
}

bool PreparePreviewImages(const ImageBuffer &host) {
    if (!host.pixels || IsEmptyRect(host.bounds))
        return false;
    gProxies.ValidEffectProxyRegion = CreateRegion(kCreateValidEffect);
    gProxies.ValidHostProxyRegion = CreateRegion(kCreateValidHost);
    if (!gProxies.ValidEffectProxyRegion || !gProxies.ValidHostProxyRegion) {
        FreePreviewImages();
        return false;
    }
    TakeHostImage(host);
    return true;
}

void CreatePreviewProxies() {
    gProxies.mutex = CreateMutexA(nullptr, FALSE, nullptr);
    if (!gProxies.mutex)
        ReportError({kSiteMutex, kSystemError, GetLastError()}, kStopIcon, kTitleUnexpected,
                    "Could not create the preview images mutex.");
    CreateProxyRegions();
}

void DeletePreviewRegions() {
    for (HRGN *region : {&gProxies.WorkRegion, &gProxies.InvalidateDisplayRegion,
                         &gProxies.ValidScaledProxyRegion, &gProxies.InvalidWorkRegion, &gProxies.TempRegion,
                         &gProxies.ScaledProxyRegion, &gProxies.FreshRegion})
        DeleteRegion(region);
}

void FreePreviewImages() {
    if (gProxies.mutex)
        CloseHandle(gProxies.mutex);
    DeleteRegion(&gProxies.ValidEffectProxyRegion);
    DeleteRegion(&gProxies.ValidHostProxyRegion);
    FreeImageBuffer(&gProxies.EffectProxyImage);
    FreeStore(&gProxies.scaledProxy);
    FreeStore(&gProxies.draft);
    FreeStore(&gProxies.original);
    FreeDraftPictures(&gProxies.draftPictures);
    CountedFree(gProxies.lightSources.records, gProxies.lightSourceBytes);
    gProxies = PreviewProxies{};
}

bool EnsureEffectImage() {
    if (gProxies.EffectProxyImage.pixels)
        return true;
    const ImageBuffer &host = gProxies.HostProxyImage;
    // Only what is valid is ever read, so that nothing need be cleared.
    if (AllocateUnclearedImageBuffer(host.imageMode, host.bytesPerSample, host.transparencyPlanes,
                                     host.bounds, false, &gProxies.EffectProxyImage, nullptr) == kNoError)
        return true;
    ReportError({kSiteEffectImage, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                "Could not (re)create the EffectProxyImage.");
    return false;
}

PreviewGeometry GeometryOfRequest(const PreviewRequest &request) {
    return {gProxies.HostProxyImage.bounds, request.display, request.centerX, request.centerY, request.zoom};
}

bool ShowsEffectsOnly() {
    return gProxies.hasPrevious && gProxies.previous.previewOn && gProxies.previous.effectsOnly;
}

void InvalidateEffect(const IntRect &rect) {
    ++gProxies.effectChanges;
    CutRect(gProxies.ValidEffectProxyRegion, rect, kCutEffect);
    if (!gProxies.hasPrevious || !gProxies.previous.previewOn)
        return;
    CutRect(gProxies.ValidScaledProxyRegion, ScaleRect(rect, gProxies.renderingZoom), kCutScaled);
    CutRect(gProxies.FreshRegion, ScaleRect(rect, gProxies.previous.zoom), kCutFresh);
}
