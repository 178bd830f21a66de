#include "plugin/FinalRender.h"

#include "diag/ErrorReport.h"
#include "engine/FixedPoint.h"
#include "engine/InitializationTask.h"
#include "engine/LightSourceTable.h"
#include "plugin/DialogRun.h"
#include "plugin/HostImage.h"
#include "plugin/PluginState.h"
#include "plugin/RenderThreads.h"
#include "render/AngleTables.h"
#include "render/KeptRun.h"
#include "render/RenderDriver.h"

#include <algorithm>
#include <limits>
#include <windows.h>

namespace {

constexpr int32_t kTileSize = 2048;
constexpr uint32_t kTableWaitSlice = 20; // milliseconds
constexpr double kFullScale = 100.0;     // percent

struct Progress {
    int32_t done, total;
};

void ReportProgress(const Progress &progress) {
    void (*progressProc)(int32_t, int32_t) = gFilterRecord->progressProc;
    if (progressProc)
        progressProc(progress.done, progress.total);
}

bool HasUserCancelled() {
    HostBoolean (*abortProc)() = gFilterRecord->abortProc;
    return abortProc && abortProc() != 0;
}

int32_t ToProgressCount(uint32_t rows) {
    return static_cast<int32_t>(std::min<uint32_t>(rows, std::numeric_limits<int32_t>::max()));
}

// Hosts divide by the total: it is 0 until the task has prepared its image.
void ReportTableProgress() {
    uint32_t done = 0, total = 0;
    WaitLightSourceTable(&done, &total, 0);
    if (total != 0)
        ReportProgress({ToProgressCount(done), ToProgressCount(total)});
}

HostResult WaitForTable() {
    HANDLE thread = LightSourceTableThread();
    while (thread && WaitForSingleObject(thread, kTableWaitSlice) == WAIT_TIMEOUT)
        ReportTableProgress();
    return LightSourceTableResult();
}

// Draws into the image itself: nothing reads its old samples any more, and a picture of its own for each tile
// would take as long to fill as to draw.
HostResult RenderTile(const RenderSettings &settings, const IntRect &tile, ImageBuffer *image,
                      Progress *progress) {
    if (!RenderEffect(settings, *image, tile, GetLightSourceTable(), gShuttingDown, image, RenderThreads(0)))
        return kWriteErr;
    ReportProgress(*progress);
    if (const HostResult result = WriteTile(*image, tile))
        return result;
    ++progress->done;
    ReportProgress(*progress);
    return kNoError;
}

HostResult RenderTiles(const RenderSettings &settings, ImageBuffer *image, Progress *progress) {
    const IntRect &area = image->bounds;
    for (int32_t top = area.top; top < area.bottom; top += kTileSize)
        for (int32_t left = area.left; left < area.right; left += kTileSize) {
            const IntRect tile = IntersectRects(area, {left, top, left + kTileSize, top + kTileSize});
            if (const HostResult result = RenderTile(settings, tile, image, progress))
                return result;
            if (HasUserCancelled())
                return kUserCanceledErr;
        }
    return kNoError;
}

HostResult RenderAndWrite(ImageBuffer *image) {
    const RenderSettings settings = MakeRenderSettings(*gParameters, kFullScale);
    const int32_t across = (image->width + kTileSize - 1) / kTileSize;
    const int32_t down = (image->height + kTileSize - 1) / kTileSize;
    if (const HostResult result = WaitForTable())
        return result;
    gPreciseMode = true;
    gFloor = FloorForBytesPerSample(image->bytesPerSample);
    Progress progress = {0, across * down + 1};
    ReportProgress(progress);
    ++progress.done;
    ReportProgress(progress);
    return RenderTiles(settings, image, &progress);
}

// What a diagnostic caller asked for stays behind after a run that ended well.
void EndRun(HostResult result, int32_t bytesPerSample) {
    gShuttingDown = 1;
    const LightSourceTable table = result == kNoError ? TakeTableToKeep() : LightSourceTable{};
    StopLightSourceTableInit();
    CloseLightSourceTableThread();
    FreeRenderState();
    if (result == kNoError)
        KeepRun(table, MakeRenderSettings(*gParameters, kFullScale), bytesPerSample);
    else
        ForgetRun();
}

HostResult RunOnImage(ImageBuffer *image, bool showDialog) {
    SetImageGeometry(image->bounds);
    BuildAngleTables();
    ResetRenderState();
    StartLightSourceTableInit(*image);
    HostResult result = showDialog ? RunDialog(*image) : kNoError;
    if (result == kNoError)
        result = RenderAndWrite(image);
    EndRun(result, image->bytesPerSample);
    return result;
}

} // namespace

HostResult FilterImage(bool showDialog) {
    gShuttingDown = 0;
    gFatalErrorStatus = 0;
    ImageBuffer image{};
    HostResult result = ReadInputImage(&image);
    if (result == kNoError)
        result = RunOnImage(&image, showDialog);
    gShuttingDown = 1;
    FreeImageBuffer(&image);
    return result;
}
