#include "ui/preview/PreviewDraft.h"

#include "engine/SystemThreads.h"
#include "render/RenderDriver.h"
#include "ui/pixels/DraftPictures.h"
#include "ui/pixels/PreviewGeometry.h"
#include "ui/preview/PreviewProxies.h"
#include "ui/preview/PreviewStars.h"
#include "ui/preview/PreviewTiles.h"

#include <algorithm>
#include <chrono>

namespace {

using Clock = std::chrono::steady_clock;

// Pixels drawn for each that is shown, along an axis. Below 2 the stars become too thick, below 1 the picture
// coarse.
constexpr double kFactors[] = {3.0, 2.0, 1.5, 1.0, 0.6, 0.35};
constexpr int32_t kQualities = std::size(kFactors);
static_assert(kQualities == kCoarsestDraft + 1);

// Milliseconds: a draft that took longer is followed by a coarser one, and one that a finer one would not
// exceed by a finer one. From 100 % on fewer pixels show more.
constexpr double kTooSlow = 65.0, kTooSlowFull = 80.0, kFastEnough = 35.0;
constexpr int32_t kProcessorsForDialog = 1;

double ScaleOf(const PreviewRequest &request, int32_t quality) {
    const double scale = std::min(request.zoom, kFullZoom) * kFactors[quality];
    return std::max(std::min({scale, kFullZoom, gProxies.draftPictures.masterScale}), kLeastDraftScale);
}

void Coarsen(const PreviewRequest &request) {
    const double before = ScaleOf(request, gProxies.draftQuality);
    while (gProxies.draftQuality + 1 < kQualities && ScaleOf(request, gProxies.draftQuality) >= before)
        ++gProxies.draftQuality;
}

void Refine(const PreviewRequest &request, double milliseconds) {
    const double scale = ScaleOf(request, gProxies.draftQuality);
    int32_t finer = gProxies.draftQuality;
    while (finer > 0 && ScaleOf(request, finer) <= scale)
        --finer;
    const double ratio = ScaleOf(request, finer) / scale;
    if (milliseconds * ratio * ratio < kFastEnough)
        gProxies.draftQuality = finer;
}

void ChooseQuality(const PreviewRequest &request, double milliseconds) {
    const double limit = request.zoom < kFullZoom ? kTooSlow : kTooSlowFull;
    if (milliseconds > limit)
        Coarsen(request);
    if (milliseconds > 2 * limit)
        Coarsen(request);
    if (milliseconds < kFastEnough)
        Refine(request, milliseconds);
}

bool TakeLightSources() {
    if (!LockPreview())
        return false;
    const bool isTaken = CopyLightSources();
    UnlockPreview();
    return isTaken;
}

bool DrawDraft(const PreviewRequest &request, const std::atomic<uint8_t> &stop, PixelStore *draft) {
    DraftPictures &pictures = gProxies.draftPictures;
    const double scale = ScaleOf(request, gProxies.draftQuality);
    const ImageBuffer *picture = NeedDraftPicture(scale, stop, &pictures);
    if (!picture)
        return false;
    RenderSettings settings = SettingsOfRequest(request);
    settings.scale = scale;
    return RenderEffect(settings, *picture, picture->bounds, gProxies.lightSources, stop, &pictures.drawn,
                        RenderThreads(kProcessorsForDialog)) &&
           FinishDraft(pictures.drawn, scale, pictures.document, request.zoom, stop, draft);
}

void ReplaceDraft(PixelStore draft) {
    if (LockPreview()) {
        std::swap(draft, gProxies.draft);
        UnlockPreview();
    }
    FreeStore(&draft);
}

bool NeedMaster(const PreviewRequest &request, const std::atomic<uint8_t> &stop) {
    const IntRect document = VisibleDocument(request);
    return !IsEmptyRect(document) &&
           NeedDraftMaster(gProxies.HostProxyImage, document, request.zoom, stop, &gProxies.draftPictures);
}

} // namespace

bool MakeDraft(const PreviewRequest &request, const std::atomic<uint8_t> &stop) {
    if (!NeedMaster(request, stop) || !TakeLightSources())
        return false;
    const Clock::time_point start = Clock::now();
    PixelStore draft{};
    const bool isMade = DrawDraft(request, stop, &draft);
    const double taken = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    if (isMade || stop)
        ChooseQuality(request, taken);
    if (isMade) {
        MatchColors(gProxies.tileBitmap, &draft);
        ReplaceDraft(draft);
    }
    return isMade;
}

void PrepareDraft(const PreviewRequest &request, const std::atomic<uint8_t> &stop) {
    if (NeedMaster(request, stop))
        NeedDraftPicture(ScaleOf(request, gProxies.draftQuality), stop, &gProxies.draftPictures);
}

void DropDraft() {
    if (gProxies.draft.pixels) // only this thread makes one
        ReplaceDraft(PixelStore{});
}
