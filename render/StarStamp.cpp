#include "render/StarStamp.h"

#include "diag/BufferUsage.h"

#include <algorithm>
#include <limits>

namespace {

bool FitsInt16(int32_t value) {
    return value >= std::numeric_limits<int16_t>::min() && value <= std::numeric_limits<int16_t>::max();
}

} // namespace

bool ReserveStampEntry(StarStamp *stamp, uint64_t stepBytes) {
    if (stamp->count == std::numeric_limits<int32_t>::max())
        return false;
    const uint64_t needed = (static_cast<uint64_t>(stamp->count) + 1) * sizeof(StampEntry);
    if (stamp->capacityBytes >= needed)
        return true;
    // Half of what is there, when that is more than the step: copying stays in proportion to the entries.
    const uint64_t grownBytes = stamp->capacityBytes + std::max(stepBytes, stamp->capacityBytes / 2);
    if (grownBytes > std::numeric_limits<size_t>::max())
        return false;
    void *grown = stamp->entries ? CountedRealloc(stamp->entries, static_cast<size_t>(stamp->capacityBytes),
                                                  static_cast<size_t>(grownBytes))
                                 : CountedAlloc(static_cast<size_t>(grownBytes));
    if (!grown)
        return false;
    stamp->entries = static_cast<StampEntry *>(grown);
    stamp->capacityBytes = grownBytes;
    return true;
}

bool AppendStampEntry(StarStamp *stamp, int32_t quarterX, int32_t quarterY, const uint32_t factor[3],
                      uint32_t value, uint64_t stepBytes) {
    const int32_t dx = quarterX / kPhases, dy = quarterY / kPhases;
    if (!FitsInt16(dx) || !FitsInt16(dy))
        return true;
    if (!ReserveStampEntry(stamp, stepBytes))
        return false;
    stamp->entries[stamp->count++] = StampEntry{
        static_cast<int16_t>(dx), static_cast<int16_t>(dy), {factor[0], factor[1], factor[2]}, value};
    stamp->minX = std::min(stamp->minX, dx);
    stamp->minY = std::min(stamp->minY, dy);
    stamp->maxX = std::max(stamp->maxX, dx + 1);
    stamp->maxY = std::max(stamp->maxY, dy + 1);
    return true;
}

void EmptyStamp(StarStamp *stamp) {
    stamp->count = 0;
    stamp->minX = stamp->minY = stamp->maxX = stamp->maxY = 0;
}

void FreeStamp(StarStamp *stamp) {
    CountedFree(stamp->entries, static_cast<size_t>(stamp->capacityBytes));
    *stamp = StarStamp{};
}
