#include "plugin/FinalRender.h"

#include "diag/ErrorReport.h"
#include "engine/InitializationTask.h"
#include "engine/image/FixedPoint.h"
#include "engine/table/LightSourceTable.h"
#include "plugin/DialogRun.h"
#include "plugin/TileRun.h"
#include "plugin/record/HostImage.h"
#include "plugin/record/HostProgress.h"
#include "plugin/record/PluginState.h"
#include "render/KeptRun.h"
#include "render/RenderDriver.h"
#include "render/RenderState.h"
#include "render/shape/AngleTables.h"

#include <algorithm>
#include <limits>
#include <windows.h>

namespace {

constexpr uint32_t kTableWaitSlice = 20; // milliseconds
constexpr double kFullScale = 100.0;     // percent

int32_t ToProgressCount(uint32_t rows) {
    return static_cast<int32_t>(std::min<uint32_t>(rows, std::numeric_limits<int32_t>::max()));
}

// Hosts divide by the total: it is 0 until the task has prepared its image.
HostResult ReportTableProgress() {
    uint32_t done = 0, total = 0;
    WaitLightSourceTable(&done, &total, 0);
    return total != 0 ? ReportProgress(ToProgressCount(done), ToProgressCount(total)) : kNoError;
}

HostResult WaitForTable() {
    HANDLE thread = LightSourceTableThread();
    while (thread && WaitForSingleObject(thread, kTableWaitSlice) == WAIT_TIMEOUT)
        if (const HostResult result = ReportTableProgress())
            return result;
    return LightSourceTableResult();
}

HostResult RenderAndWrite(ImageBuffer *image) {
    if (const HostResult result = WaitForTable())
        return result;
    UsePreciseMode(image->bytesPerSample);
    return RenderAndWriteTiles(MakeRenderSettings(*gParameters, kFullScale), image);
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
    HostResult result = LightSourceTableThread() ? kNoError : LightSourceTableResult();
    if (result == kNoError && showDialog)
        result = RunDialog(*image);
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
