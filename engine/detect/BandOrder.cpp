#include "engine/detect/BandOrder.h"

#include "engine/detect/BandScan.h"
#include "engine/detect/WorkerContext.h"
#include "engine/image/AnalysisImage.h"

#include <algorithm>

namespace {

size_t CountLookedAt(const BandPicture &picture, const MarkLog &log) {
    return static_cast<size_t>(
        std::count_if(log.pixels, log.pixels + log.count,
                      [&picture](const MarkedPixel &at) { return WasLookedAt(picture, at.y); }));
}

// Whether the rows that a worker looked at bear the marks of all earlier bands, and no others, as far as it
// did not mark them itself. Those bands are settled: no pixel is in two of their logs.
bool SawWhatIsThere(const DetectionShared &shared, const WorkerContext &worker) {
    const BandPicture &picture = worker.picture;
    size_t marks = 0;
    for (uint32_t i = 0; i < worker.index; ++i)
        marks += CountLookedAt(picture, shared.workers[i].picture.own);
    const MarkLog &taken = picture.taken;
    return marks == CountLookedAt(picture, taken) &&
           std::all_of(taken.pixels, taken.pixels + taken.count, [&](const MarkedPixel &at) {
               return !WasLookedAt(picture, at.y) || IsPixelMarked(FetchPixel(shared.image, at.x, at.y));
           });
}

void ScanInOrder(WorkerContext *worker) {
    EmptyWorkerTable(worker);
    worker->ahead.isOutdated = false;
    ShowSharedPicture(&worker->picture);
    ScanBand(worker);
}

} // namespace

void SettleBands(DetectionShared *shared) {
    for (int32_t i = 0; i < shared->workerCount && shared->workerCount > 1; ++i) {
        if (shared->cancel->load(std::memory_order_relaxed))
            return;
        WorkerContext *worker = &shared->workers[i];
        const MarkLog &own = worker->picture.own;
        if (worker->ahead.isComplete && SawWhatIsThere(*shared, *worker))
            std::for_each(own.pixels, own.pixels + own.count,
                          [shared](const MarkedPixel &at) { MarkPixel(&shared->image, at.x, at.y); });
        else if (worker->ahead.wasStarted)
            ScanInOrder(worker);
    }
}
