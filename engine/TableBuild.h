// The steps of building the global light source table that do not depend on how the workers are run.
#pragma once

#include "engine/detect/Bands.h"
#include "engine/detect/Detection.h"
#include "engine/image/ImageBuffer.h"
#include "engine/image/WorkerThreads.h"

#include <atomic>
#include <cstdint>

// What a way of running the workers adds to each worker's context; null where there is nothing to add.
struct WorkerHooks {
    HostResult (*create)(WorkerContext *worker); // last step of making a context
    void (*release)(WorkerContext *worker);      // first step of releasing it
    WorkerThreads threads = kThisThreadOnly;     // to reduce the image with
};

// One run. Owner of the analysis image and the contexts; ReleaseTableBuild frees them.
struct TableBuild {
    DetectionShared shared;
    WorkerHooks hooks;
    IntRect documentBounds; // of the image
    WorkerContext *workers; // kMaxWorkers of them, the first workerCount in use
    int32_t workerCount;
};

// Forgets the last run's counters; call it before the run can be watched.
void ResetTableBuild(const std::atomic<uint8_t> *cancel, const ImageLock &imageLock, const WorkerHooks &hooks,
                     TableBuild *build);

// Sets the precision mode and the visibility floor, makes the analysis image and the contexts of `workers`
// workers (brought into 1..kMaxWorkers). Returns kNoError, kMemFullErr, kParamErr (no analysis image),
// kUserCanceledErr or what the hook said. ReleaseTableBuild must follow in any case.
HostResult PrepareTableBuild(const ImageBuffer &image, int32_t workers, TableBuild *build);

// Merges the workers' tables into the global one and ranks it. Returns the first failure of a worker, or of
// the merge, or kUserCanceledErr; a cancelled or failed merge is not ranked.
HostResult MergeAndRank(const TableBuild &build, const std::atomic<uint8_t> &tableCancel);

void ReleaseTableBuild(TableBuild *build);
