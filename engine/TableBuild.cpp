#include "engine/TableBuild.h"

#include "diag/BufferUsage.h"
#include "engine/DebugImages.h"
#include "engine/detect/WorkerContext.h"
#include "engine/image/AnalysisImage.h"
#include "engine/image/FixedPoint.h"
#include "engine/table/LightSourceGrid.h"
#include "engine/table/LightSourceTable.h"

#include <algorithm>

namespace {

constexpr size_t kWorkersBytes = kMaxWorkers * sizeof(WorkerContext);

bool IsCancelled(const TableBuild &build) {
    return build.shared.cancel->load(std::memory_order_relaxed) != 0;
}

HostResult AllocateWorkers(TableBuild *build) {
    build->workers = static_cast<WorkerContext *>(CountedAlloc(kWorkersBytes));
    if (!build->workers)
        return kMemFullErr;
    std::fill_n(build->workers, kMaxWorkers, WorkerContext{});
    return kNoError;
}

HostResult InitializeWorkers(int32_t workers, TableBuild *build) {
    IntRect bands[kMaxWorkers];
    build->workerCount = std::clamp(workers, 1, kMaxWorkers);
    build->shared.workers = build->workers;
    build->shared.workerCount = build->workerCount;
    PlanBands(build->shared.image.bounds, build->workerCount, bands);
    HostResult result = kNoError;
    for (int32_t i = 0; result == kNoError && i < build->workerCount; ++i) {
        WorkerContext *worker = &build->workers[i];
        result = InitializeWorkerContext(static_cast<uint32_t>(i), bands[i], &build->shared, worker);
        if (result == kNoError && build->hooks.create)
            result = build->hooks.create(worker);
    }
    return result;
}

HostResult FirstWorkerFailure(const TableBuild &build) {
    for (int32_t i = 0; i < build.workerCount; ++i)
        if (build.workers[i].result != kNoError)
            return build.workers[i].result;
    return kNoError;
}

// A failure met before the stop tells more than that there was one.
HostResult StoppedResult(const TableBuild &build) {
    const HostResult failure = FirstWorkerFailure(build);
    return failure != kNoError ? failure : kUserCanceledErr;
}

} // namespace

void ResetTableBuild(const std::atomic<uint8_t> *cancel, const ImageLock &imageLock, const WorkerHooks &hooks,
                     TableBuild *build) {
    build->shared.image = AnalysisImage{};
    build->shared.cancel = cancel;
    build->shared.imageLock = imageLock;
    build->shared.rowsDone = 0;
    build->shared.rowsTotal = 0;
    build->shared.workers = nullptr;
    build->shared.workerCount = 0;
    build->shared.news = 0;
    build->hooks = hooks;
    build->documentBounds = IntRect{};
    build->workers = nullptr;
    build->workerCount = 0;
}

HostResult PrepareTableBuild(const ImageBuffer &image, int32_t workers, TableBuild *build) {
    const HostResult allocated = AllocateWorkers(build);
    UsePreciseMode(image.bytesPerSample);
    if (allocated != kNoError)
        return allocated;
    const HostResult prepared =
        PrepareAnalysisImage(image, *build->shared.cancel, &build->shared.image, build->hooks.threads);
    if (prepared != kNoError)
        return prepared;
    KeepAnalysisImage(build->shared.image);
    build->documentBounds = image.bounds;
    const IntRect &bounds = build->shared.image.bounds;
    build->shared.rowsTotal = static_cast<uint32_t>(bounds.bottom - bounds.top);
    const HostResult result = InitializeWorkers(workers, build);
    return result == kNoError && IsCancelled(*build) ? kUserCanceledErr : result;
}

HostResult MergeAndRank(const TableBuild &build, const std::atomic<uint8_t> &tableCancel) {
    AttachLightSourceGrid(build.documentBounds,
                          static_cast<int32_t>(kGridCellSize * build.shared.image.scale), gLightSourceTable);
    for (int32_t i = 0; i < build.workerCount; ++i) {
        if (IsCancelled(build))
            return StoppedResult(build);
        const HostResult merged = MergeWorkerTable(build.workers[i].table, build.shared.image, tableCancel);
        if (merged != kNoError)
            return merged;
    }
    if (IsCancelled(build))
        return StoppedResult(build);
    RankLightSources(tableCancel);
    return FirstWorkerFailure(build);
}

void ReleaseTableBuild(TableBuild *build) {
    KeepFlatAreas(build->shared.image);
    FreeAnalysisImage(&build->shared.image);
    for (int32_t i = 0; build->workers && i < kMaxWorkers; ++i) {
        if (build->hooks.release)
            build->hooks.release(&build->workers[i]);
        ReleaseWorkerContext(&build->workers[i]);
    }
    CountedFree(build->workers, kWorkersBytes);
    build->workers = nullptr;
    build->workerCount = 0;
}
