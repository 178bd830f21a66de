#include "ui/preview/ProxyUpdateLoop.h"

#include "ui/pixels/PreviewGeometry.h"
#include "ui/preview/PreviewPreparation.h"
#include "ui/preview/PreviewProxies.h"
#include "ui/preview/ProxyUpdateState.h"
#include "ui/window/DialogMessages.h"

namespace {

constexpr RegionStep kSetTile{1103, "Could not set rectangle into TempRegion."};
constexpr RegionStep kAddTile{1106, "Could not combine InvalidateDisplayRegion with TempRegion."};
constexpr RegionStep kEmptyDisplay{1203, "Could not set rectangle into InvalidateDisplayRegion."};

// A preview that is ready within this time is shown at once, not piece by piece. Nothing waits longer: while
// requests cancel one another before they are ready, as when a slider is dragged, the time goes on.
constexpr uint32_t kQuietMilliseconds = 400;

// One request as it is served.
struct Serving {
    IntRect visible;   // scaled, as far as the image reaches
    IntRect displayed; // scaled plane behind the display
    int32_t total;     // tiles
    bool isQuiet;
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
    PreparePreview(request);
    return serving;
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

// False when the tile could not be rendered: then the rest cannot be, either, or is not wanted any more.
bool ServeTile(const Serving &serving, const PreviewTile &tile) {
    if (RenderPreviewTile(gProxyUpdate.working, tile, gProxyUpdate.cancel) != TileResult::rendered)
        return false;
    PostProgress(++gProxyUpdate.working.tilesDone, serving.total);
    if (tile.area == PreviewArea::visible)
        AddToDisplayRegion(serving, tile.rect);
    return true;
}

bool IsQuietTimeOver() {
    return GetTickCount() - gProxyUpdate.quietSince >= kQuietMilliseconds;
}

void EndQuiet(Serving *serving) {
    if (serving->isQuiet)
        Flush(*serving);
    serving->isQuiet = false;
}

// Nothing more is missing, or nothing more can be made.
void EndServing(Serving *serving) {
    EndQuiet(serving);
    PostProgress(0, 0);
    Flush(*serving);
}

bool FindNextTile(const PreviewRequest &request, PreviewTile *tile) {
    return FindPreviewTile(request, PreviewArea::visible, tile) ||
           FindPreviewTile(request, PreviewArea::surroundings, tile) ||
           FindPreviewTile(request, PreviewArea::image, tile);
}

} // namespace

void ServeRequest() {
    Serving serving = BeginServing();
    while (!IsCancelled()) {
        PreviewTile tile{};
        if (!FindNextTile(gProxyUpdate.working, &tile)) {
            EndServing(&serving);
            return;
        }
        if (tile.area != PreviewArea::visible)
            EndQuiet(&serving);
        if (!ServeTile(serving, tile)) {
            if (!IsCancelled())
                EndServing(&serving);
            return;
        }
        if (tile.area == PreviewArea::visible && IsQuietTimeOver()) {
            serving.isQuiet = false;
            Flush(serving);
        }
    }
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
