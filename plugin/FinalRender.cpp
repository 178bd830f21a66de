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

// The output has the input's planes; a mask takes no part in rendering.
HostResult RenderTile(const RenderSettings &settings, const ImageBuffer &input, const IntRect &area,
                      Progress *progress) {
    ImageBuffer output{};
    HostResult result = DescribeBuffer(area, false, &output);
    if (result != kNoError)
        return result;
    if (RenderEffect(settings, input, area, GetLightSourceTable(), gShuttingDown, &output,
                     RenderThreads(0))) {
        ReportProgress(*progress);
        result = WriteTile(output);
    } else {
        result = kWriteErr;
    }
    if (result == kNoError) {
        ++progress->done;
        ReportProgress(*progress);
    }
    FreeImageBuffer(&output);
    return result;
}

HostResult RenderTiles(const RenderSettings &settings, const ImageBuffer &input, Progress *progress) {
    const IntRect &area = input.bounds;
    for (int32_t top = area.top; top < area.bottom; top += kTileSize)
        for (int32_t left = area.left; left < area.right; left += kTileSize) {
            const IntRect tile = IntersectRects(area, {left, top, left + kTileSize, top + kTileSize});
            if (const HostResult result = RenderTile(settings, input, tile, progress))
                return result;
            if (HasUserCancelled())
                return kUserCanceledErr;
        }
    return kNoError;
}

HostResult RenderAndWrite(const ImageBuffer &input) {
    const RenderSettings settings = MakeRenderSettings(*gParameters, kFullScale);
    const int32_t across = (input.width + kTileSize - 1) / kTileSize;
    const int32_t down = (input.height + kTileSize - 1) / kTileSize;
    if (const HostResult result = WaitForTable())
        return result;
    gPreciseMode = true;
    gFloor = FloorForBytesPerSample(input.bytesPerSample);
    Progress progress = {0, across * down + 1};
    ReportProgress(progress);
    ++progress.done;
    ReportProgress(progress);
    return RenderTiles(settings, input, &progress);
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

HostResult RunOnImage(const ImageBuffer &input, bool showDialog) {
    SetImageGeometry(input.bounds);
    BuildAngleTables();
    ResetRenderState();
    StartLightSourceTableInit(input);
    HostResult result = showDialog ? RunDialog(input) : kNoError;
    if (result == kNoError)
        result = RenderAndWrite(input);
    EndRun(result, input.bytesPerSample);
    return result;
}

} // namespace

HostResult FilterImage(bool showDialog) {
    gShuttingDown = 0;
    gFatalErrorStatus = 0;
    ImageBuffer input{};
    HostResult result = ReadInputImage(&input);
    if (result == kNoError)
        result = RunOnImage(input, showDialog);
    gShuttingDown = 1;
    FreeImageBuffer(&input);
    return result;
}
