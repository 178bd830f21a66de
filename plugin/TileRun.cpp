#include "plugin/TileRun.h"

#include "engine/SystemThreads.h"
#include "engine/table/LightSourceTable.h"
#include "plugin/record/HostCall.h"
#include "plugin/record/HostImage.h"
#include "plugin/record/HostProgress.h"
#include "plugin/record/PluginState.h"
#include "render/RenderDriver.h"

namespace {

constexpr int32_t kTileSize = 2048;

// The tile that is being drawn, on a thread of its own or when it is asked for.
struct TileDrawing {
    const RenderSettings &settings;
    // Drawn into: nothing reads its old samples any more, and a picture of its own for each tile would take
    // as long to fill as to draw.
    ImageBuffer *image;
    WorkerThreads threads;
    IntRect tile;
    bool succeeded;
    WorkerTask task;
    void *thread; // null while there is none
};

void DrawTile(void *drawing) {
    auto *d = static_cast<TileDrawing *>(drawing);
    d->succeeded = RenderEffect(d->settings, *d->image, d->tile, GetLightSourceTable(), gShuttingDown,
                                d->image, d->threads);
}

void BeginTile(const IntRect &tile, bool ahead, TileDrawing *d) {
    d->tile = tile;
    d->task = {DrawTile, d};
    d->thread = ahead ? d->threads.start(&d->task) : nullptr;
}

// False when drawing failed.
bool EndTile(TileDrawing *d) {
    if (d->thread)
        d->threads.join(d->thread);
    else
        DrawTile(d);
    d->thread = nullptr;
    return d->succeeded;
}

void DropTile(TileDrawing *d) {
    gShuttingDown = 1;
    if (d->thread)
        d->threads.join(d->thread);
    d->thread = nullptr;
}

int32_t CountTiles(int32_t size) {
    return (size + kTileSize - 1) / kTileSize;
}

IntRect TileAt(const ImageBuffer &image, int32_t number) {
    const int32_t across = CountTiles(image.width);
    const int32_t left = image.bounds.left + number % across * kTileSize;
    const int32_t top = image.bounds.top + number / across * kTileSize;
    return IntersectRects(image.bounds, {left, top, left + kTileSize, top + kTileSize});
}

// `number` counts the tiles from 0; one step of the progress lies before the first.
HostResult WriteDrawnTile(const ImageBuffer &image, int32_t number, int32_t progressTotal) {
    HostResult result = ReportProgress(number + 1, progressTotal);
    if (result == kNoError)
        result = WriteTile(image, TileAt(image, number));
    if (result == kNoError)
        result = ReportProgress(number + 2, progressTotal);
    if (result == kNoError && HasUserCancelled())
        result = kUserCanceledErr;
    return result == kNoError ? HostFailure() : result;
}

} // namespace

// The first tile is drawn on this thread, which is the one whose reports are shown: it builds what the whole
// image needs.
HostResult RenderAndWriteTiles(const RenderSettings &settings, ImageBuffer *image) {
    const int32_t count = CountTiles(image->width) * CountTiles(image->height);
    ReportProgress(0, count + 1);
    if (const HostResult result = ReportProgress(1, count + 1))
        return result;
    TileDrawing drawing{settings, image, RenderThreads(0), {}, false, {}, nullptr};
    BeginTile(TileAt(*image, 0), false, &drawing);
    for (int32_t number = 0; number < count; ++number) {
        if (!EndTile(&drawing))
            return kWriteErr;
        if (number + 1 < count)
            BeginTile(TileAt(*image, number + 1), drawing.threads.count > 1, &drawing);
        if (const HostResult result = WriteDrawnTile(*image, number, count + 1)) {
            DropTile(&drawing);
            return result;
        }
    }
    return kNoError;
}
