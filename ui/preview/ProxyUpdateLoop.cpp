#include "ui/preview/ProxyUpdateLoop.h"

#include "ui/pixels/PreviewGeometry.h"
#include "ui/preview/PreviewDraft.h"
#include "ui/preview/PreviewPreparation.h"
#include "ui/preview/PreviewProxies.h"
#include "ui/preview/ProxyUpdateState.h"
#include "ui/window/DialogMessages.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

constexpr RegionStep kSetTile{1103, "Could not set rectangle into TempRegion."};
constexpr RegionStep kAddTile{1106, "Could not combine InvalidateDisplayRegion with TempRegion."};
constexpr RegionStep kEmptyDisplay{1203, "Could not set rectangle into InvalidateDisplayRegion."};

// A preview that is ready within this time is shown at once, not piece by piece. Nothing waits longer: while
// requests cancel one another before they are ready, as when a slider is dragged, the time goes on.
constexpr uint32_t kQuietMilliseconds = 400;

// Milliseconds that the exact view may be expected to take without a draft before it: when requests come one
// by one, and when the one before was not finished in time.
constexpr double kShortAlone = 35.0, kShortInSeries = 20.0;

// One request as it is served.
struct Serving {
    IntRect visible;   // scaled, as far as the image reaches
    IntRect displayed; // scaled plane behind the display
    int32_t total;     // tiles
    bool isQuiet;
    bool isViewWhole;
    double missing; // visible document pixels whose effect was missing
    Clock::time_point start;
};

bool IsCancelled() {
    return gProxyUpdate.cancel.task.load() != 0;
}

void PostProgress(uint32_t position, int32_t total) {
    PostMessageA(gProxyUpdate.dialog, kMsgProgress, position, total);
}

// The display was last told of another view: what has been finished since then may be anywhere in this one.
bool IsViewNew(const Serving &serving) {
    const IntRect &before = gProxyUpdate.flushedView, &now = serving.displayed;
    return gProxyUpdate.working.zoom != gProxyUpdate.flushedZoom || before.left != now.left ||
           before.top != now.top || before.right != now.right || before.bottom != now.bottom;
}

void Flush(const Serving &serving) {
    const HRGN region = gProxies.InvalidateDisplayRegion;
    if (IsViewNew(serving)) {
        InvalidateRect(gProxyUpdate.display, nullptr, FALSE);
        gProxyUpdate.flushedZoom = gProxyUpdate.working.zoom;
        gProxyUpdate.flushedView = serving.displayed;
    } else if (IsRegionFilled(region)) {
        InvalidateRgn(gProxyUpdate.display, region, FALSE);
    }
    SetRegionRect(region, {0, 0, 0, 0}, kEmptyDisplay);
}

Serving BeginServing() {
    const PreviewRequest &request = gProxyUpdate.working;
    Serving serving{};
    serving.displayed = VisibleRect(GeometryOfRequest(request));
    serving.visible = VisibleImage(request);
    serving.total = CountTiles(serving.visible, PreviewTileSize(request.zoom, serving.visible));
    serving.isQuiet = true;
    if (!IsRegionFilled(gProxies.InvalidateDisplayRegion))
        gProxyUpdate.quietSince = request.requestTime;
    PreparePreview(request, gProxyUpdate.cancel.task);
    serving.missing = MissingEffect(request);
    serving.start = Clock::now();
    return serving;
}

double VisiblePixels(const Serving &serving) {
    const double scale = gProxyUpdate.working.zoom / kFullZoom;
    return double(serving.visible.right - serving.visible.left) *
           (serving.visible.bottom - serving.visible.top) / (scale * scale);
}

double ExpectedMilliseconds(const Serving &serving) {
    return serving.missing * gProxyUpdate.nanosecondsPerPixel / 1e6;
}

// A view that was cancelled would have taken longer.
void MeasureView(const Serving &serving, bool isWhole) {
    constexpr double kWorthMeasuring = 1e5;
    if (serving.missing < kWorthMeasuring)
        return;
    const double taken = std::chrono::duration<double, std::nano>(Clock::now() - serving.start).count();
    double &kept = gProxyUpdate.nanosecondsPerPixel;
    kept = isWhole ? taken / serving.missing : std::max(kept, taken / serving.missing);
}

// Replaces the whole view in one piece.
void ShowDraft(Serving *serving) {
    const bool isSeries = std::exchange(gProxyUpdate.isViewUnfinished, true);
    if (ExpectedMilliseconds(*serving) <= (isSeries ? kShortInSeries : kShortAlone))
        return;
    const bool mayBeCoarser = gProxies.draftQuality < kCoarsestDraft;
    gProxyUpdate.draftStartTime = mayBeCoarser ? std::max<uint32_t>(GetTickCount(), 1) : 0;
    if (MakeDraft(gProxyUpdate.working, gProxyUpdate.stopDraft)) {
        gProxyUpdate.flushedZoom = 0.0;
        Flush(*serving);
    }
    gProxyUpdate.draftStartTime = 0;
    if (LockRequests()) {
        gProxyUpdate.stopDraft = gProxyUpdate.isStopping;
        UnlockRequests();
    }
    serving->start = Clock::now();
}

// The display's pixels of a visible tile.
void AddToDisplayRegion(const Serving &serving, const IntRect &tile) {
    const IntRect &display = gProxyUpdate.working.display;
    const int32_t dx = display.left - serving.displayed.left, dy = display.top - serving.displayed.top;
    if (!LockPreview())
        return;
    if (SetRegionRect(gProxies.TempRegion, {tile.left + dx, tile.top + dy, tile.right + dx, tile.bottom + dy},
                      kSetTile))
        CombineRegions(gProxies.InvalidateDisplayRegion, gProxies.InvalidateDisplayRegion,
                       gProxies.TempRegion, RGN_OR, kAddTile);
    UnlockPreview();
}

// So that a new request can tell whether it is still of use.
void SetTileInWork(const IntRect &document) {
    if (LockRequests()) {
        gProxyUpdate.tileInWork = document;
        UnlockRequests();
    }
}

// False when the tile could not be rendered: then the rest cannot be, either, or is not wanted any more.
bool ServeTile(const Serving &serving, const PreviewTile &tile) {
    SetTileInWork(DocumentOfTile(gProxyUpdate.working, tile));
    const TileResult result = RenderPreviewTile(gProxyUpdate.working, tile, gProxyUpdate.cancel);
    SetTileInWork({});
    if (result != TileResult::rendered)
        return false;
    PostProgress(++gProxyUpdate.working.tilesDone, serving.total);
    if (tile.area == PreviewArea::visible)
        AddToDisplayRegion(serving, tile.rect);
    return true;
}

bool IsQuietTimeOver() {
    return GetTickCount() - gProxyUpdate.quietSince >= kQuietMilliseconds;
}

void FlushExact(const Serving &serving) {
    ShowFreshOverDraft();
    Flush(serving);
}

void EndQuiet(Serving *serving) {
    if (serving->isQuiet)
        FlushExact(*serving);
    serving->isQuiet = false;
}

// The exact view is whole; what the next draft is drawn from can be made ready now.
void EndView(Serving *serving) {
    if (std::exchange(serving->isViewWhole, true))
        return;
    gProxyUpdate.isViewUnfinished = false;
    DropDraft();
    MeasureView(*serving, true);
    if (gProxyUpdate.working.previewOn &&
        VisiblePixels(*serving) * gProxyUpdate.nanosecondsPerPixel / 1e6 > kShortAlone)
        PrepareDraft(gProxyUpdate.working, gProxyUpdate.stopDraft);
}

// Nothing more is missing, or nothing more can be made.
void EndServing(Serving *serving) {
    EndQuiet(serving);
    gProxyUpdate.requestsServed = gProxyUpdate.requestsTaken;
    PostProgress(0, 0);
    Flush(*serving);
}

// What is looked at is drawn first: under the pointer, or else in the middle.
ScaledPoint PointLookedAt(const Serving &serving) {
    const IntRect &display = gProxyUpdate.working.display;
    POINT point{};
    if (!GetCursorPos(&point) || !ScreenToClient(gProxyUpdate.display, &point) ||
        !RectContains(display, point.x, point.y))
        return {gProxyUpdate.working.centerX, gProxyUpdate.working.centerY};
    return {point.x - display.left + serving.displayed.left, point.y - display.top + serving.displayed.top};
}

bool FindNextTile(const Serving &serving, PreviewTile *tile) {
    const PreviewRequest &request = gProxyUpdate.working;
    const ScaledPoint point = PointLookedAt(serving);
    return FindPreviewTile(request, PreviewArea::visible, tile, &point) ||
           FindPreviewTile(request, PreviewArea::surroundings, tile, &point) ||
           FindPreviewTile(request, PreviewArea::image, tile, &point);
}

} // namespace

void ServeRequest() {
    Serving serving = BeginServing();
    ShowDraft(&serving);
    while (!IsCancelled()) {
        PreviewTile tile{};
        const bool isFound = FindNextTile(serving, &tile);
        if (!isFound || tile.area != PreviewArea::visible) {
            EndQuiet(&serving);
            EndView(&serving);
        }
        if (!isFound) {
            EndServing(&serving);
            return;
        }
        if (!ServeTile(serving, tile)) {
            if (!IsCancelled())
                EndServing(&serving);
            break;
        }
        if (tile.area == PreviewArea::visible && IsQuietTimeOver()) {
            serving.isQuiet = false;
            FlushExact(serving);
        }
    }
    if (!serving.isViewWhole)
        MeasureView(serving, false);
}

void ServeOriginal() {
    gProxyUpdate.working.previewOn = 0;
    Serving serving = BeginServing();
    PreviewTile tile{};
    while (!IsCancelled() && FindPreviewTile(gProxyUpdate.working, PreviewArea::visible, &tile))
        if (RenderPreviewTile(gProxyUpdate.working, tile, gProxyUpdate.cancel) == TileResult::rendered)
            AddToDisplayRegion(serving, tile.rect);
        else
            break;
    Flush(serving);
}
