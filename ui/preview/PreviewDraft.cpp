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

// Pixels drawn for each that is shown, along an axis, and the share of the stars, the brightest of them.
// Below 2 pixels the stars become too thick, below 1 the picture coarse.
constexpr struct {
    double factor, stars;
} kDrafts[] = {{3.0, 1.0}, {2.0, 1.0},  {1.5, 1.0},  {1.0, 1.0},
               {0.6, 1.0}, {0.35, 1.0}, {0.35, 0.6}, {0.35, 0.35}};
constexpr int32_t kQualities = std::size(kDrafts), kStarsAlways = 300;
static_assert(kQualities == kCoarsestDraft + 1);

// Milliseconds: a draft that took longer is followed by a coarser one, and one that a finer one would not
// exceed by a finer one. From 100 % on fewer pixels show more.
constexpr double kTooSlow = 28.0, kTooSlowFull = 32.0, kFastEnough = 20.0;
constexpr int32_t kProcessorsForDialog = 1;

double ScaleOf(const PreviewRequest &request, int32_t quality) {
    const double scale = std::min(request.zoom, kFullZoom) * kDrafts[quality].factor;
    return std::max(std::min({scale, kFullZoom, gProxies.draftPictures.masterScale}), kLeastDraftScale);
}

// How the times of two qualities compare, roughly.
double CostOf(const PreviewRequest &request, int32_t quality) {
    const double scale = ScaleOf(request, quality);
    return scale * scale * kDrafts[quality].stars;
}

void Coarsen(const PreviewRequest &request) {
    const double before = CostOf(request, gProxies.draftQuality);
    while (gProxies.draftQuality + 1 < kQualities && CostOf(request, gProxies.draftQuality) >= before)
        ++gProxies.draftQuality;
}

void Refine(const PreviewRequest &request, double milliseconds) {
    const double cost = CostOf(request, gProxies.draftQuality);
    int32_t finer = gProxies.draftQuality;
    while (finer > 0 && CostOf(request, finer) <= cost)
        --finer;
    if (milliseconds * CostOf(request, finer) / cost < kFastEnough)
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

// The sources of the stars that a draft of this quality shows: they are in order of brightness.
LightSourceTableView BrightestSources(const RenderSettings &settings, double share) {
    const LightSourceTableView &all = gProxies.lightSources;
    const uint32_t cut = ThresholdCutLevel(settings.threshold);
    const auto hasStar = [cut](const LightSource &source) { return IsLightSourceSelected(source, cut); };
    const auto stars = std::count_if(all.records, all.records + all.count, hasStar);
    auto left = std::max<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(double(stars) * share), kStarsAlways);
    uint32_t count = 0;
    for (; count < all.count && left > 0; ++count)
        left -= hasStar(all.records[count]);
    return {all.records, count};
}

bool DrawDraft(const PreviewRequest &request, const std::atomic<uint8_t> &stop, PixelStore *draft) {
    DraftPictures &pictures = gProxies.draftPictures;
    const double scale = ScaleOf(request, gProxies.draftQuality);
    const ImageBuffer *picture = NeedDraftPicture(scale, stop, &pictures);
    if (!picture)
        return false;
    RenderSettings settings = SettingsOfRequest(request);
    settings.scale = scale;
    const LightSourceTableView sources = BrightestSources(settings, kDrafts[gProxies.draftQuality].stars);
    return RenderEffect(settings, *picture, picture->bounds, sources, stop, &pictures.drawn,
                        RenderThreads(kProcessorsForDialog)) &&
           FinishDraft(pictures.drawn, scale, pictures.document, request.zoom, stop, draft);
}

void ReplaceDraft(PixelStore draft) {
    if (LockPreview()) {
        std::swap(draft, gProxies.draft);
        gProxies.draftHidesFresh = true;
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

void ShowFreshOverDraft() {
    if (!LockPreview())
        return;
    gProxies.draftHidesFresh = false;
    UnlockPreview();
}

void DropDraft() {
    if (gProxies.draft.pixels) // only this thread makes one
        ReplaceDraft(PixelStore{});
}
