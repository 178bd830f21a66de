// Which distances of a star's tables a picture needs. At a high zoom a preview shows a small part of arms
// that are very long: filling their whole tables took longer than all the rest.
#pragma once

#include "render/stamp/StampLayer.h"

#include <atomic>
#include <cstdint>
#include <limits>

constexpr DistanceRange kAllDistances = {0, std::numeric_limits<uint32_t>::max()};

// How many more ranges reach into a block than into the one before. All zero: nothing is needed.
struct DistanceNeed {
    int32_t change[DistanceBlocks{}.size() + 1];
};
void NeedDistances(const DistanceRange &range, DistanceNeed *need);

// Fills the blocks that are needed and not there yet, of all tables that have room. False when aborted.
bool FillTables(const DistanceNeed &need, const std::atomic<uint8_t> &abort, StarTables *tables);
