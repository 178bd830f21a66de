#include "engine/detect/SpotMemo.h"

#include "diag/BufferUsage.h"

namespace {

// The block in `spare`: this, then one MeasuredPixel for each pixel of the picture, row by row.
struct SpotMemo {
    uint32_t state; // of the last profile; 0: none
    int32_t x, y;
    RadialProfile profile;
};

SpotMemo *MemoOf(const WorkerContext &worker) {
    return static_cast<SpotMemo *>(worker.spare);
}

} // namespace

void AttachSpotMemo(WorkerContext *worker) {
    const IntRect &bounds = worker->picture.bounds;
    const size_t pixels =
        static_cast<size_t>(bounds.right - bounds.left) * static_cast<size_t>(bounds.bottom - bounds.top);
    const size_t bytes = sizeof(SpotMemo) + pixels * sizeof(MeasuredPixel);
    worker->spare = CountedZeroAlloc(bytes);
    worker->spareBytes = worker->spare ? bytes : 0;
}

MeasuredPixel *MemoEntry(const WorkerContext &worker, int32_t x, int32_t y) {
    SpotMemo *memo = MemoOf(worker);
    if (!memo)
        return nullptr;
    const IntRect &bounds = worker.picture.bounds;
    auto *entries = reinterpret_cast<MeasuredPixel *>(memo + 1);
    return &entries[int64_t{y - bounds.top} * (bounds.right - bounds.left) + (x - bounds.left)];
}

void RememberProfile(const WorkerContext &worker, int32_t x, int32_t y, uint32_t state,
                     const RadialProfile &profile) {
    if (SpotMemo *memo = MemoOf(worker))
        *memo = SpotMemo{state, x, y, profile};
}

bool RecallProfile(const WorkerContext &worker, int32_t x, int32_t y, uint32_t state,
                   RadialProfile *profile) {
    const SpotMemo *memo = MemoOf(worker);
    if (!memo || memo->state != state || memo->x != x || memo->y != y)
        return false;
    *profile = memo->profile;
    return true;
}
