#include "engine/detect/EarlierMarks.h"

#include "engine/detect/WorkerContext.h"

#include <algorithm>

namespace {

// Few spots are followed further than this from the candidate that led to them.
constexpr int32_t kUsualReach = 256;

bool TakeMark(MarkedPixel at, WorkerContext *worker) {
    BandPicture *picture = &worker->picture;
    if (WasLookedAt(*picture, at.y))
        return false;
    if (at.y < worker->ahead.window.first || at.y > worker->ahead.window.last) {
        worker->ahead.hasPassedOver = true;
        return true;
    }
    if (IsPixelMarked(FetchPixel(*picture, at.x, at.y)) || MarkBandPixel(picture, at, &picture->taken))
        return true;
    worker->result = kMemFullErr;
    return false;
}

bool LooksBeyondWindow(const WorkerContext &worker) {
    const RowRange &seen = worker.picture.lookedAt, &window = worker.ahead.window;
    return seen.first < window.first || seen.last > window.last;
}

void WidenWindow(WorkerContext *worker) {
    RowRange *window = &worker->ahead.window;
    window->first = std::min(window->first, worker->picture.lookedAt.first);
    window->last = std::max(window->last, worker->picture.lookedAt.last);
}

bool HasTakenWhatIsGone(const WorkerContext &worker) {
    for (uint32_t i = 0; i < worker.index; ++i)
        if (worker.ahead.seen[i].count > 0 &&
            worker.ahead.seen[i].starts != worker.shared->workers[i].ahead.starts)
            return true;
    return false;
}

// What was taken over before is kept while it still holds. The caller holds the image lock.
void TakeAfresh(bool isWider, WorkerContext *worker) {
    if (isWider || HasTakenWhatIsGone(*worker)) {
        TakeBackMarks(&worker->picture, &worker->picture.taken);
        worker->ahead.hasPassedOver = false;
        for (auto &seen : worker->ahead.seen)
            seen = {};
    }
    TakeEarlierMarks(worker);
}

bool TakeMarksOf(const WorkerContext &earlier, WorkerContext *worker) {
    auto &seen = worker->ahead.seen[earlier.index];
    if (seen.starts != earlier.ahead.starts && seen.count > 0)
        return false; // they have been taken back
    seen.starts = earlier.ahead.starts;
    const MarkLog &log = earlier.picture.own;
    if (seen.count < log.count)
        ++worker->picture.state;
    for (; seen.count < log.count; ++seen.count)
        if (!TakeMark(log.pixels[seen.count], worker))
            return false;
    return true;
}

} // namespace

void LockImage(const DetectionShared &shared) {
    if (shared.imageLock.lock)
        shared.imageLock.lock(shared.imageLock.owner);
}

void UnlockImage(const DetectionShared &shared) {
    if (shared.imageLock.unlock)
        shared.imageLock.unlock(shared.imageLock.owner);
}

void PublishMarks(DetectionShared *shared) {
    shared->news.fetch_add(1, std::memory_order_relaxed);
}

bool TakeEarlierMarks(WorkerContext *worker) {
    const DetectionShared &shared = *worker->shared;
    worker->ahead.seenNews = shared.news.load(std::memory_order_relaxed);
    for (uint32_t i = 0; i < worker->index; ++i)
        if (!TakeMarksOf(shared.workers[i], worker))
            return false;
    return true;
}

bool KeepUpWithEarlierBands(WorkerContext *worker) {
    const DetectionShared &shared = *worker->shared;
    if (shared.news.load(std::memory_order_relaxed) == worker->ahead.seenNews)
        return true;
    LockImage(shared);
    const bool isGood = TakeEarlierMarks(worker);
    UnlockImage(shared);
    return isGood;
}

void PrepareAheadScan(WorkerContext *worker) {
    worker->picture.hasOwnRows = true;
    worker->ahead.wasStarted = true;
    worker->ahead.window = {worker->band.top - kUsualReach, worker->band.bottom - 1 + kUsualReach};
}

void StartOver(WorkerContext *worker) {
    BandPicture *picture = &worker->picture;
    const bool isWider = LooksBeyondWindow(*worker);
    EmptyWorkerTable(worker);
    worker->ahead.isOutdated = false;
    WidenWindow(worker);
    picture->lookedAt = kNoRows;
    LockImage(*worker->shared);
    if (picture->own.count > 0)
        PublishMarks(worker->shared);
    TakeBackMarks(picture, &picture->own);
    ++worker->ahead.starts;
    TakeAfresh(isWider && worker->ahead.hasPassedOver, worker);
    UnlockImage(*worker->shared);
}

bool HasMissedMarks(const WorkerContext &worker) {
    return worker.ahead.hasPassedOver && LooksBeyondWindow(worker);
}
