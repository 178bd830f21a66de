#include "engine/detect/AheadScan.h"

#include "diag/BufferUsage.h"
#include "engine/detect/EarlierMarks.h"
#include "engine/table/LightSourceGrid.h"
#include "engine/table/LightSourceTable.h"

#include <algorithm>

namespace {

// Few spots are followed further than this from the candidate that led to them.
constexpr int32_t kUsualReach = 256;

size_t RowsOf(const IntRect &area) {
    return static_cast<size_t>(std::max(area.bottom - area.top, 0));
}

HostResult AddToTable(const FoundLight &light, WorkerContext *worker) {
    return AddLightSource(&worker->table, light.position, light.radiusSquared, light.levels[0],
                          light.levels[1], light.levels[2], light.enabled);
}

bool KeepLight(const FoundLight &light, AheadScan *ahead) {
    const size_t capacity = ahead->lightBytes / sizeof(FoundLight);
    if (ahead->lightCount == capacity) {
        const size_t newBytes = (capacity + capacity / 2 + 512) * sizeof(FoundLight);
        void *grown = CountedRealloc(ahead->lights, ahead->lightBytes, newBytes);
        if (!grown)
            return false;
        ahead->lights = static_cast<FoundLight *>(grown);
        ahead->lightBytes = newBytes;
    }
    ahead->lights[ahead->lightCount++] = light;
    return true;
}

// Takes its own marks back from number `kept` on. Returns the rows they were in.
RowRange TakeBackMarks(size_t kept, WorkerContext *worker) {
    BandPicture *picture = &worker->picture;
    RowRange rows = kNoRows;
    if (kept == picture->own.count)
        return rows;
    LockImage(*worker->shared);
    for (size_t i = kept; i < picture->own.count; ++i) {
        RestoreRun(picture, picture->own.runs[i]);
        rows.Include(picture->own.runs[i].y, picture->own.runs[i].y);
    }
    picture->own.count = kept;
    ++picture->state;
    ++worker->ahead.rewinds;
    PublishMarks(worker->shared);
    UnlockImage(*worker->shared);
    return rows;
}

void FindLightsAgain(uint32_t kept, WorkerContext *worker) {
    if (kept == worker->ahead.lightCount)
        return;
    EmptyWorkerTable(worker);
    worker->ahead.lightCount = kept;
    for (uint32_t i = 0; i < kept && worker->result == kNoError; ++i)
        worker->result = AddToTable(worker->ahead.lights[i], worker);
}

} // namespace

bool PrepareAheadScan(WorkerContext *worker) {
    AheadScan &ahead = worker->ahead;
    worker->picture.hasOwnRows = true;
    ahead.row = worker->band.top;
    ahead.outdated = kNoRow;
    ahead.window = {worker->band.top - kUsualReach, worker->band.bottom - 1 + kUsualReach};
    const size_t startBytes = RowsOf(worker->band) * sizeof(RowStart);
    const size_t lookBytes = RowsOf(worker->picture.bounds) * sizeof(int32_t);
    ahead.starts = static_cast<RowStart *>(CountedAlloc(startBytes));
    ahead.startBytes = startBytes;
    ahead.firstLook = static_cast<int32_t *>(CountedAlloc(lookBytes));
    ahead.lookBytes = lookBytes;
    if (!ahead.starts || !ahead.firstLook)
        return false;
    std::fill_n(ahead.firstLook, RowsOf(worker->picture.bounds), kNoRow);
    return true;
}

void ReleaseAheadScan(WorkerContext *worker) {
    AheadScan &ahead = worker->ahead;
    CountedFree(ahead.starts, ahead.startBytes);
    CountedFree(ahead.firstLook, ahead.lookBytes);
    CountedFree(ahead.lights, ahead.lightBytes);
    FreeMarkLog(&ahead.withdrawn);
    for (TakenMarks &taken : ahead.taken)
        FreeMarkLog(&taken.log);
    ahead = AheadScan{};
}

void BeginRow(WorkerContext *worker) {
    AheadScan &ahead = worker->ahead;
    worker->picture.lookedAt = kNoRows;
    ahead.starts[ahead.row - worker->band.top] = {ahead.lightCount, worker->picture.own.count};
}

void EndRow(WorkerContext *worker) {
    AheadScan &ahead = worker->ahead;
    const IntRect &bounds = worker->picture.bounds;
    const RowRange seen = worker->picture.lookedAt;
    for (int32_t y = std::max(seen.first, bounds.top); y <= std::min(seen.last, bounds.bottom - 1); ++y)
        ahead.firstLook[y - bounds.top] = std::min(ahead.firstLook[y - bounds.top], ahead.row);
    worker->picture.lookedAt = kNoRows;
    ++ahead.row;
}

void GoBack(WorkerContext *worker) {
    AheadScan &ahead = worker->ahead;
    const RowStart start = ahead.starts[ahead.outdated - worker->band.top];
    ahead.row = ahead.outdated;
    ahead.outdated = kNoRow;
    // Forgets what was measured, as it forgets where that looked: a flat area may have taken changes over in
    // the middle of a candidate, whose later measurements then are of the picture as it is now.
    ++worker->picture.state;
    worker->picture.lookedAt = kNoRows;
    std::replace_if(
        ahead.firstLook, ahead.firstLook + RowsOf(worker->picture.bounds),
        [&ahead](int32_t row) { return row >= ahead.row; }, kNoRow);
    FindLightsAgain(start.lights, worker);
    ShowMarksAgain(TakeBackMarks(start.runs, worker), worker);
}

HostResult AddFoundLight(const FoundLight &light, WorkerContext *worker) {
    if (worker->picture.hasOwnRows && !KeepLight(light, &worker->ahead))
        return kMemFullErr;
    return AddToTable(light, worker);
}

void EmptyWorkerTable(WorkerContext *worker) {
    FreeLightSourceGrid(&worker->table);
    worker->table.Count = 0;
    AttachLightSourceGrid(worker->shared->image.bounds, kGridCellSize, &worker->table);
    worker->result = kNoError;
}
