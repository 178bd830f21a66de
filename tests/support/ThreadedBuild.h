// Builds the light source table as the background task does, with the standard library's threads.
#pragma once

#include "engine/TableBuild.h"
#include "engine/detect/BandScan.h"
#include "engine/image/BandWorkers.h"
#include "engine/table/LightSourceTable.h"
#include "tests/support/StandardThreads.h"

#include <cstdlib>
#include <mutex>
#include <utility>

struct ThreadedBuild {
    struct CheckedMutex : std::mutex {
        bool isHeld = false;
    } imageMutex;
    TableBuild build;

    // `tableCancel` and the rest as in the background task. `scan` runs all bands' workers.
    template <typename Scan>
    HostResult Run(const ImageBuffer &image, int32_t workers, const std::atomic<uint8_t> &cancel, Scan scan) {
        FreeTableRecords(gLightSourceTable);
        const auto lockImage = [](void *owner) {
            static_cast<CheckedMutex *>(owner)->lock();
            static_cast<CheckedMutex *>(owner)->isHeld = true;
        };
        const auto unlockImage = [](void *owner) {
            if (!std::exchange(static_cast<CheckedMutex *>(owner)->isHeld, false))
                std::abort(); // given back without having been taken
            static_cast<CheckedMutex *>(owner)->unlock();
        };
        const ImageLock lock{lockImage, unlockImage, &imageMutex};
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
