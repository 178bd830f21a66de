#include "engine/detect/EarlierMarks.h"

#include <algorithm>

namespace {

bool IsSameRun(const MarkedRun &a, const MarkedRun &b) {
    return a.y == b.y && a.left == b.left && a.right == b.right;
}

// How many runs two logs begin with alike.
size_t CountCommonRuns(const MarkLog &a, const MarkLog &b) {
    const size_t count = std::min(a.count, b.count);
    return static_cast<size_t>(std::mismatch(a.runs, a.runs + count, b.runs, IsSameRun).first - a.runs);
}

// Makes the copy of an earlier band's log what that is now. False without memory.
bool TakeLog(const WorkerContext &earlier, TakenMarks *taken, MarkLog *withdrawn) {
    const MarkLog &log = earlier.picture.own;
    size_t same = taken->log.count;
    bool hasMemory = true;
    if (taken->rewinds != earlier.ahead.rewinds) {
        same = CountCommonRuns(taken->log, log);
        if (taken->shown > same)
            hasMemory = AppendRuns(taken->log.runs + same, taken->shown - same, withdrawn);
        taken->shown = std::min(taken->shown, same);
        taken->log.count = same;
        taken->rewinds = earlier.ahead.rewinds;
    }
    return hasMemory && AppendRuns(log.runs + same, log.count - same, &taken->log);
}

bool TakeLogs(WorkerContext *worker) {
    const DetectionShared &shared = *worker->shared;
    bool hasMemory = true;
    LockImage(shared);
    worker->ahead.seenNews = shared.news.load(std::memory_order_relaxed);
    for (uint32_t i = 0; i < worker->index; ++i)
        hasMemory =
            hasMemory && TakeLog(shared.workers[i], &worker->ahead.taken[i], &worker->ahead.withdrawn);
    UnlockImage(shared);
    return hasMemory;
}

// A change in the row y is too late for the scan from the row found on.
void NoteChange(int32_t y, WorkerContext *worker) {
    AheadScan &ahead = worker->ahead;
    ahead.outdated = std::min(ahead.outdated, ahead.firstLook[y - worker->picture.bounds.top]);
    if (worker->picture.lookedAt.Contains(y))
        ahead.outdated = std::min(ahead.outdated, ahead.row);
}

void NoteChanges(WorkerContext *worker) {
    AheadScan &ahead = worker->ahead;
    for (size_t i = 0; i < ahead.withdrawn.count; ++i)
        NoteChange(ahead.withdrawn.runs[i].y, worker);
    for (const TakenMarks &taken : ahead.taken)
        for (size_t i = taken.shown; i < taken.log.count; ++i)
            NoteChange(taken.log.runs[i].y, worker);
}

bool LooksBeyondWindow(const WorkerContext &worker) {
    const RowRange &seen = worker.picture.lookedAt, &window = worker.ahead.window;
    return seen.first < window.first || seen.last > window.last;
}

void Show(const MarkedRun &run, WorkerContext *worker) {
    if (worker->ahead.window.Contains(run.y) && !MarkRun(&worker->picture, run))
        worker->result = kMemFullErr;
}

// Few spots are followed out of the window: from then on marks are shown wherever they are.
void OpenWindow(WorkerContext *worker) {
    const RowRange before = worker->ahead.window;
    worker->ahead.window = kAllRows;
    ++worker->picture.state;
    for (const TakenMarks &taken : worker->ahead.taken)
        for (size_t i = 0; i < taken.log.count; ++i)
            if (!before.Contains(taken.log.runs[i].y)) {
                NoteChange(taken.log.runs[i].y, worker);
                Show(taken.log.runs[i], worker);
            }
}

bool HasChanges(const AheadScan &ahead) {
    return ahead.withdrawn.count > 0 ||
           std::any_of(std::begin(ahead.taken), std::end(ahead.taken),
                       [](const TakenMarks &taken) { return taken.shown < taken.log.count; });
}

void ShowChanges(WorkerContext *worker) {
    RowRange restored = kNoRows;
    ++worker->picture.state;
    for (size_t i = 0; i < worker->ahead.withdrawn.count; ++i) {
        const MarkedRun &run = worker->ahead.withdrawn.runs[i];
        RestoreRun(&worker->picture, run);
        restored.Include(run.y, run.y);
    }
    worker->ahead.withdrawn.count = 0;
    for (TakenMarks &taken : worker->ahead.taken)
        for (; taken.shown < taken.log.count; ++taken.shown)
            Show(taken.log.runs[taken.shown], worker);
    ShowMarksAgain(restored, worker);
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

void ShowMarksAgain(RowRange rows, WorkerContext *worker) {
    if (rows.first > rows.last)
        return;
    const auto show = [&](const MarkLog &log) {
        for (size_t i = 0; i < log.count; ++i)
            if (rows.Contains(log.runs[i].y))
                Show(log.runs[i], worker);
    };
    for (const TakenMarks &taken : worker->ahead.taken)
        show(taken.log);
    show(worker->picture.own);
}

bool LagsBehind(const WorkerContext &worker) {
    for (uint32_t i = 0; i < worker.index; ++i) {
        const TakenMarks &taken = worker.ahead.taken[i];
        const WorkerContext &earlier = worker.shared->workers[i];
        if (taken.rewinds != earlier.ahead.rewinds || taken.log.count != earlier.picture.own.count)
            return true;
    }
    return false;
}

bool KeepUpWithEarlierBands(WorkerContext *worker) {
    if (LooksBeyondWindow(*worker))
        OpenWindow(worker);
    if (worker->index > 0 && worker->shared->news.load(std::memory_order_relaxed) != worker->ahead.seenNews) {
        if (!TakeLogs(worker))
            worker->result = kMemFullErr;
        if (HasChanges(worker->ahead)) {
            NoteChanges(worker);
            ShowChanges(worker);
        }
    }
    return worker->ahead.outdated == kNoRow && worker->result == kNoError;
}
