#include "engine/detect/FloodFill.h"

#include "diag/BufferUsage.h"
#include "diag/ErrorReport.h"

#include <cstdlib>

namespace {

constexpr uint32_t kSiteFillList = 1081;
constexpr size_t kGrowthPositions = 32768;

struct FillPosition {
    int32_t x, y;
};

// Positions that are marked but whose neighbours have not been looked at. Owner: FillFlatArea.
struct FillList {
    FillPosition *positions;
    size_t count, allocatedBytes;
};

bool PushPosition(FillList *list, FillPosition position) {
    if (list->count == list->allocatedBytes / sizeof(FillPosition)) {
        const size_t newBytes = list->allocatedBytes + kGrowthPositions * sizeof(FillPosition);
        void *grown = CountedRealloc(list->positions, list->allocatedBytes, newBytes);
        if (!grown)
            return false;
        list->positions = static_cast<FillPosition *>(grown);
        list->allocatedBytes = newBytes;
    }
    list->positions[list->count++] = position;
    return true;
}

bool IsChannelNear(uint32_t value, uint32_t reference) {
    return std::abs(int64_t{value} - int64_t{reference}) <= (reference >> 3);
}

bool BelongsToArea(const PixelSample &p, const PixelSample &reference) {
    return p.selectionLevel != 0 && IsChannelNear(p.red, reference.red) &&
           IsChannelNear(p.green, reference.green) && IsChannelNear(p.blue, reference.blue);
}

// False when the list could not grow.
bool MarkAndPush(AnalysisImage *image, FillPosition position, FillList *list) {
    MarkPixel(image, position.x, position.y);
    return PushPosition(list, position);
}

bool SpreadFrom(AnalysisImage *image, FillPosition from, const PixelSample &reference, FillList *list) {
    const FillPosition neighbors[] = {
        {from.x + 1, from.y}, {from.x - 1, from.y}, {from.x, from.y + 1}, {from.x, from.y - 1}};
    for (const FillPosition &n : neighbors)
        // Outside the bounds nothing is selected.
        if (BelongsToArea(FetchPixel(*image, n.x, n.y), reference) && !MarkAndPush(image, n, list))
            return false;
    return true;
}

bool FillFrom(AnalysisImage *image, FillPosition seed, const PixelSample &reference, FillList *list) {
    bool hasMemory = MarkAndPush(image, seed, list);
    while (hasMemory && list->count > 0)
        hasMemory = SpreadFrom(image, list->positions[--list->count], reference, list);
    return hasMemory;
}

} // namespace

void FillFlatArea(WorkerContext *worker, int32_t x, int32_t y, const PixelSample &reference) {
    FillList list{};
    const ImageLock &imageLock = worker->shared->imageLock;
    if (imageLock.lock)
        imageLock.lock(imageLock.owner);
    const bool isNew = !IsPixelMarked(FetchPixel(worker->shared->image, x, y));
    const bool hasMemory = FillFrom(&worker->shared->image, FillPosition{x, y}, reference, &list);
    if (isNew) // a marked seed spreads nowhere
        worker->shared->fills.fetch_add(1, std::memory_order_relaxed);
    if (imageLock.unlock)
        imageLock.unlock(imageLock.owner);
    CountedFree(list.positions, list.allocatedBytes);
    if (hasMemory)
        return;
    worker->result = kMemFullErr;
    ReportError({kSiteFillList, kUserMessage, 0}, kStopIcon, kTitleExiting,
                "Unable to allocate memory for a flood fill list.");
}
