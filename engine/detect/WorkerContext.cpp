#include "engine/detect/WorkerContext.h"

#include "diag/BufferUsage.h"
#include "diag/ErrorReport.h"
#include "engine/detect/AheadScan.h"
#include "engine/detect/SpotMemo.h"
#include "engine/table/LightSourceGrid.h"
#include "engine/table/LightSourceTable.h"

#include <cstring>

namespace {

constexpr uint32_t kSiteDiskParams = 901, kSiteRingParams = 907, kSiteDiskShape = 918, kSiteRingShape = 930;

constexpr size_t kParamsBytes = kShapeCount * sizeof(float);
constexpr size_t kShapesBytes = kShapeCount * sizeof(ShapeRecord);
static_assert(kParamsBytes == 1536 && kShapesBytes == 251904);

// Allocates one zeroed buffer of a context; a failure is reported and sets *result.
void *AllocateBuffer(size_t size, uint32_t index, uint32_t site, const char *name, size_t *bytes,
                     HostResult *result) {
    void *buffer = CountedAlloc(size);
    if (!buffer) {
        ReportError({site, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "Thread %d: Could not allocate buffer for %s.", static_cast<int>(index), name);
        *result = kMemFullErr;
        return nullptr;
    }
    memset(buffer, 0, size);
    *bytes = size;
    return buffer;
}

HostResult AllocateBuffers(WorkerContext *w) {
    HostResult result = kNoError;
    w->DiskParamsBuff = static_cast<float *>(AllocateBuffer(kParamsBytes, w->index, kSiteDiskParams,
                                                            "DiskParamsBuff", &w->diskParamsBytes, &result));
    w->RingParamsBuff = static_cast<float *>(AllocateBuffer(kParamsBytes, w->index, kSiteRingParams,
                                                            "RingParamsBuff", &w->ringParamsBytes, &result));
    w->DiskShapeBuff = static_cast<ShapeRecord *>(
        AllocateBuffer(kShapesBytes, w->index, kSiteDiskShape, "DiskShapeBuff", &w->diskShapeBytes, &result));
    w->RingShapeBuff = static_cast<ShapeRecord *>(
        AllocateBuffer(kShapesBytes, w->index, kSiteRingShape, "RingShapeBuff", &w->ringShapeBytes, &result));
    return result;
}

void FillShapes(WorkerContext *w) {
    for (int32_t i = 0; i < kShapeCount; ++i) {
        const float radius = static_cast<float>(i) * kShapeRadiusStep;
        w->DiskParamsBuff[i] = radius;
        w->RingParamsBuff[i] = radius;
        w->DiskShapeBuff[i].sample = SampleDisk;
        w->DiskShapeBuff[i].radius = &w->DiskParamsBuff[i];
        w->RingShapeBuff[i].sample = SampleRing;
        w->RingShapeBuff[i].radius = &w->RingParamsBuff[i];
    }
    w->disks = w->DiskShapeBuff;
    w->rings = w->RingShapeBuff;
    w->diskCount = kShapeCount;
    w->ringCount = kShapeCount;
}

void FreeShapes(ShapeRecord *shapes, size_t bytes) {
    for (size_t i = 0; shapes && i < bytes / sizeof(ShapeRecord); ++i)
        FreeShapeRecord(&shapes[i]);
    CountedFree(shapes, bytes);
}

} // namespace

HostResult InitializeWorkerContext(uint32_t index, const IntRect &band, DetectionShared *shared,
                                   WorkerContext *worker) {
    *worker = WorkerContext{};
    worker->index = index;
    worker->band = band;
    worker->nextRow = band.top;
    worker->shared = shared;
    const HostResult result = AllocateBuffers(worker);
    if (result != kNoError)
        return result;
    if (!AttachBandPicture(shared->image, &worker->picture))
        return kMemFullErr;
    FillShapes(worker);
    AttachLightSourceGrid(shared->image.bounds, kGridCellSize, &worker->table);
    AttachSpotMemo(worker);
    return kNoError;
}

void ReleaseWorkerContext(WorkerContext *worker) {
    FreeShapes(worker->DiskShapeBuff, worker->diskShapeBytes);
    FreeShapes(worker->RingShapeBuff, worker->ringShapeBytes);
    CountedFree(worker->DiskParamsBuff, worker->diskParamsBytes);
    CountedFree(worker->RingParamsBuff, worker->ringParamsBytes);
    CountedFree(worker->spare, worker->spareBytes);
    ReleaseAheadScan(worker);
    FreeBandPicture(&worker->picture);
    FreeTableRecords(&worker->table);
    *worker = WorkerContext{};
}
