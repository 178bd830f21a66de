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

void Flush() {
    const PreviewRequest &request = gProxyUpdate.working;
    const HRGN region = gProxyUpdate.InvalidateDisplayRegion;
    if (request.zoom != gProxyUpdate.flushedZoom) {
        InvalidateRect(gProxyUpdate.display, nullptr, FALSE);
        gProxyUpdate.flushedZoom = request.zoom;
    } else if (IsRegionFilled(region)) {
        InvalidateRgn(gProxyUpdate.display, region, FALSE);
    }
    SetRegionRect(region, {0, 0, 0, 0}, kEmptyDisplay);
}

// What is still to be repainted from the request before was collected for another view: all of it counts.
void CheckPendingRegion(const Serving &serving) {
    IntRect &view = gProxyUpdate.invalidFor;
    const bool isSameView = view.left == serving.displayed.left && view.top == serving.displayed.top &&
                            view.right == serving.displayed.right && view.bottom == serving.displayed.bottom;
    if (!isSameView && IsRegionFilled(gProxyUpdate.InvalidateDisplayRegion))
        gProxyUpdate.flushedZoom = 0.0;
    view = serving.displayed;
}

Serving BeginServing() {
    const PreviewRequest &request = gProxyUpdate.working;
    Serving serving{};
    serving.displayed = VisibleRect(GeometryOfRequest(request));
    serving.visible = VisibleImage(request);
    serving.total = CountTiles(serving.visible, PreviewTileSize(request.zoom, serving.visible));
    serving.isQuiet = true;
    if (!IsRegionFilled(gProxyUpdate.InvalidateDisplayRegion))
        gProxyUpdate.quietSince = request.requestTime;
    CheckPendingRegion(serving);
    PreparePreview(request);
    return serving;
}

// The display's pixels of a tile; those of tiles beside the display do no harm.
void AddToDisplayRegion(const Serving &serving, const IntRect &tile) {
    const IntRect &display = gProxyUpdate.working.display;
    const int32_t dx = display.left - serving.displayed.left, dy = display.top - serving.displayed.top;
    if (!LockPreview())
        return;
    if (SetRegionRect(gProxies.TempRegion, {tile.left + dx, tile.top + dy, tile.right + dx, tile.bottom + dy},
                      kSetTile))
        CombineRegions(gProxyUpdate.InvalidateDisplayRegion, gProxyUpdate.InvalidateDisplayRegion,
                       gProxies.TempRegion, RGN_OR, kAddTile);
    UnlockPreview();
}

// False when the tile could not be rendered: then the rest cannot be, either, or is not wanted any more.
bool ServeTile(const Serving &serving, const PreviewTile &tile) {
    if (RenderPreviewTile(gProxyUpdate.working, tile, gProxyUpdate.cancel) != TileResult::rendered)
        return false;
    PostProgress(++gProxyUpdate.working.tilesDone, serving.total);
    if (tile.area != PreviewArea::image)
        AddToDisplayRegion(serving, tile.rect);
    return true;
}

bool IsQuietTimeOver() {
    return GetTickCount() - gProxyUpdate.quietSince >= kQuietMilliseconds;
}

void EndQuiet(Serving *serving) {
    if (serving->isQuiet)
        Flush();
    serving->isQuiet = false;
}

// Nothing more is missing, or nothing more can be made.
void EndServing(Serving *serving) {
    EndQuiet(serving);
    PostProgress(0, 0);
    Flush();
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
            Flush();
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
    Flush();
}
