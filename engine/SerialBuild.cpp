#include "engine/SerialBuild.h"

#include "engine/TableBuild.h"
#include "engine/detect/BandScan.h"
#include "engine/table/LightSourceTable.h"

HostResult BuildLightSourceTable(const ImageBuffer &image, int workers, const std::atomic<uint8_t> &cancel) {
    FreeTableRecords(gLightSourceTable);
    TableBuild build;
    ResetTableBuild(&cancel, ImageLock{}, WorkerHooks{}, &build);
    HostResult result = PrepareTableBuild(image, workers, &build);
    for (int32_t i = 0; result == kNoError && i < build.workerCount; ++i)
        ScanBand(&build.workers[i]);
    if (result == kNoError)
        result = MergeAndRank(build, cancel);
    ReleaseTableBuild(&build);
    return result;
}
