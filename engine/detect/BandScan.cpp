#include "engine/detect/BandScan.h"

#include "engine/detect/AheadScan.h"
#include "engine/detect/CandidateAnalysis.h"
#include "engine/detect/EarlierMarks.h"
#include "engine/image/AnalysisImage.h"

#include <algorithm>

namespace {

// A band that is scanned ahead is looked at so many times over, in rows: what has not come to an end by then
// is scanned when the earlier bands are settled.
constexpr int64_t kScansAhead = 3;

// A candidate has at least seven tenths of the largest brightness. The product wraps in 32 bits: meant so.
uint32_t CandidateBrightness(uint32_t maxBrightness) {
    return maxBrightness * 7u / 10;
}

bool IsCandidate(const PixelSample &p, uint32_t threshold) {
    return uint64_t{p.red} + p.green + p.blue >= uint64_t{3} * threshold && IsPixelSelected(p);
}

bool IsCancelled(const WorkerContext &worker) {
    return worker.shared->cancel->load(std::memory_order_relaxed) != 0;
}

void CountRow(WorkerContext *worker, int32_t y) {
    if (y < worker->nextRow)
        return; // scanned before
    worker->nextRow = y + 1;
    worker->shared->rowsDone.fetch_add(1, std::memory_order_relaxed);
}

// False when cancelled or outdated.
bool ScanRow(WorkerContext *worker, int32_t y) {
    const BandPicture &picture = worker->picture;
    const uint32_t threshold = CandidateBrightness(picture.maxBrightness);
    const bool isInside = y >= picture.bounds.top && y < picture.bounds.bottom; // else nothing is selected
    NoteRows(picture, y, y);
    for (int32_t x = worker->band.left; x < worker->band.right; ++x) {
        if (IsCancelled(*worker))
            return false;
        if (!isInside ||
            !IsCandidate(picture.rows[y - picture.bounds.top][x - picture.bounds.left], threshold))
            continue;
        AnalyzeCandidate(worker, x, y);
        if (picture.hasOwnRows && !KeepUpWithEarlierBands(worker))
            return false;
    }
    CountRow(worker, y);
    return true;
}

// Scans on from where the band's scan stands.
void ScanOn(WorkerContext *worker) {
    AheadScan &ahead = worker->ahead;
    while (!IsCancelled(*worker)) {
        if (!KeepUpWithEarlierBands(worker) && worker->result == kNoError)
            GoBack(worker);
        if (worker->result != kNoError || ahead.row >= worker->band.bottom || --ahead.rowsLeft < 0)
            return;
        BeginRow(worker);
        if (ScanRow(worker, ahead.row))
            EndRow(worker);
    }
}

bool CanGoOn(const WorkerContext &worker) {
    const AheadScan &ahead = worker.ahead;
    return ahead.wasStarted && !ahead.isAtWork && worker.result == kNoError && ahead.rowsLeft > 0 &&
           LagsBehind(worker);
}

// Hands back a band whose scan has come to an end for now, and takes the first that nobody
// scans though earlier bands have marked since. Null when there is none.
WorkerContext *ExchangeBand(WorkerContext *done) {
    DetectionShared *shared = done->shared;
    WorkerContext *next = nullptr;
    LockImage(*shared);
    done->ahead.isAtWork = false;
    for (int32_t i = 0; i < shared->workerCount && !next; ++i)
        if (CanGoOn(shared->workers[i]))
            next = &shared->workers[i];
    if (next)
        next->ahead.isAtWork = true;
    UnlockImage(*shared);
    return next;
}

bool StartAheadScan(WorkerContext *worker) {
    const bool isReady = PrepareAheadScan(worker);
    worker->ahead.rowsLeft = kScansAhead * (int64_t{worker->band.bottom} - worker->band.top);
    if (!isReady)
        worker->result = kMemFullErr;
    LockImage(*worker->shared);
    worker->ahead.wasStarted = true;
    worker->ahead.isAtWork = isReady;
    UnlockImage(*worker->shared);
    return isReady;
}

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

// Brings an ahead scan to an end once all earlier bands are settled. Without memory the result says so.
void FinishAheadScan(WorkerContext *worker) {
    worker->ahead.rowsLeft = INT64_MAX;
    if (worker->result == kNoError)
        ScanOn(worker);
}

} // namespace

void ScanBand(WorkerContext *worker) {
    for (int32_t y = worker->band.top; y < worker->band.bottom; ++y)
        if (!ScanRow(worker, y))
            return;
}

void ScanBandAhead(WorkerContext *worker) {
    if (worker->shared->workerCount < 2) {
        ScanBand(worker);
        return;
    }
    if (!StartAheadScan(worker))
        return;
    for (WorkerContext *next = worker; next && !IsCancelled(*next); next = ExchangeBand(next))
        ScanOn(next);
}

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
