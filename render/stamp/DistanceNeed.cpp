#include "render/stamp/DistanceNeed.h"

#include <algorithm>

namespace {

constexpr uint32_t kBlocks = DistanceBlocks{}.size();

uint32_t BlockOf(uint32_t distance) {
    return std::min(distance / kBlockDistances, kBlocks - 1);
}

void FillStates(uint32_t block, StarTables *tables) {
    if (tables->statesFilled[block])
        return;
    const uint32_t first = block * kBlockDistances;
    const uint32_t end = std::min(first + kBlockDistances, tables->stateCount);
    for (uint32_t distance = first; distance < end; ++distance)
        tables->stateOfDistance[distance] = static_cast<uint16_t>(RainbowStateAt(tables->rainbow, distance));
    tables->statesFilled.set(block);
}

// Whoever looks beyond the end of a table is given its last distance.
void FillTable(uint32_t needed, int32_t place, SpikeLevels *levels, StarTables *tables) {
    ValueTable *table = &tables->values[place];
    if (!tables->isUsed[place] || !table->values)
        return;
    const uint32_t block = std::min(needed, BlockOf(table->count - 1));
    if (!tables->valuesFilled[place][block])
        FillSpikeBlock(block, levels, table);
    tables->valuesFilled[place].set(block);
    FillStates(block, tables);
}

} // namespace

void NeedDistances(const DistanceRange &range, DistanceNeed *need) {
    ++need->change[BlockOf(range.nearest)];
    --need->change[BlockOf(range.furthest) + 1];
}

bool FillTables(const DistanceNeed &need, const std::atomic<uint8_t> &abort, StarTables *tables) {
    SpikeLevels levels{};
    int32_t ranges = 0;
    for (uint32_t block = 0; block < kBlocks; ++block) {
        ranges += need.change[block];
        if (ranges == 0)
            continue;
        if (abort.load(std::memory_order_relaxed) != 0)
            return false;
        for (int32_t i = 0; i < tables->count; ++i)
            FillTable(block, i, &levels, tables);
    }
    return true;
}
