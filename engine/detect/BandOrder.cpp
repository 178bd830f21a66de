#include "engine/detect/BandOrder.h"

#include "engine/detect/BandScan.h"
#include "engine/detect/EarlierMarks.h"
#include "engine/detect/WorkerContext.h"
#include "engine/image/AnalysisImage.h"

#include <algorithm>

namespace {

// On the shared picture, which needs the least memory.
void ScanAlone(WorkerContext *worker) {
    EmptyWorkerTable(worker);
    ShowSharedPicture(&worker->picture);
    ++worker->ahead.rewinds;
    PublishMarks(worker->shared);
    ScanBand(worker);
}

void MarkInSharedPicture(const MarkLog &log, AnalysisImage *image) {
    const int64_t width = image->bounds.right - image->bounds.left;
    for (size_t i = 0; i < log.count; ++i) {
        const MarkedRun &run = log.runs[i];
        PixelSample *row = image->samples + (run.y - image->bounds.top) * width - image->bounds.left;
        std::fill(row + run.left, row + run.right, kMarkedSample);
    }
}

} // namespace

void SettleBands(DetectionShared *shared) {
    for (int32_t i = 0; i < shared->workerCount && shared->workerCount > 1; ++i) {
        WorkerContext *worker = &shared->workers[i];
        if (!worker->ahead.wasStarted)
            continue;
        FinishAheadScan(worker);
        if (shared->cancel->load(std::memory_order_relaxed))
            return;
        if (worker->result != kNoError)
            ScanAlone(worker);
        else
            MarkInSharedPicture(worker->picture.own, &shared->image);
    }
}
