// Builds the light source table as the background task does, with the standard library's threads.
#pragma once

#include "engine/TableBuild.h"
#include "engine/detect/BandScan.h"
#include "engine/image/BandWorkers.h"
#include "engine/table/LightSourceTable.h"
#include "tests/support/StandardThreads.h"

#include <mutex>

struct ThreadedBuild {
    std::mutex imageMutex;
    TableBuild build;

    // `tableCancel` and the rest as in the background task. `scan` runs all bands' workers.
    template <typename Scan>
    HostResult Run(const ImageBuffer &image, int32_t workers, const std::atomic<uint8_t> &cancel, Scan scan) {
        FreeTableRecords(gLightSourceTable);
        const ImageLock lock{[](void *owner) { static_cast<std::mutex *>(owner)->lock(); },
                             [](void *owner) { static_cast<std::mutex *>(owner)->unlock(); }, &imageMutex};
        ResetTableBuild(&cancel, lock, WorkerHooks{nullptr, nullptr, StandardThreads(workers)}, &build);
        HostResult result = PrepareTableBuild(image, workers, &build);
        if (result == kNoError) {
            scan(&build);
            SettleBands(&build.shared);
            result = MergeAndRank(build, cancel);
        }
        ReleaseTableBuild(&build);
        return result;
    }
};

// Each worker on a thread of its own.
inline void ScanOnThreads(TableBuild *build) {
    ForEachBand(
        build->workerCount, StandardThreads(build->workerCount),
        [](void *data, int32_t band, int32_t) {
            ScanBandAhead(&static_cast<TableBuild *>(data)->workers[band]);
        },
        build);
}
