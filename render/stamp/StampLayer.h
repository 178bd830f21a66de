// Lays a star or a flare onto a band of an image, row by row.
#pragma once

#include "render/stamp/Laying.h"

#include <cstdint>

// Blends the stamp, tinted, into the band. Stops early, between two arms or some rows, when *abort becomes
// non-zero.
void LayStar(const BandTarget &target, const StarStamp &stamp, const StarTables &tables,
             const StampPlace &place, const Tint &tint);
void LayFlare(const BandTarget &target, const FlareStamp &flare, const ValueTable &values,
              const StampPlace &place, const Tint &tint);

// Whether a star is laid by glow; otherwise its context needs tables.
bool LaysByGlow(const StampContext &context, const ImageBuffer &output);

// Distances from a place to what lies in `area`, both ends included; somewhat more, so that values past the
// ends of rows are in it too.
struct DistanceRange {
    uint32_t nearest, furthest;
};
DistanceRange DistancesTo(const IntRect &area, const StampPlace &place);

// Smallest stamp value that can show under a tint whose largest channel is `largest`; 0xFFFFFFFF when none
// can.
uint32_t LeastVisibleValue(uint32_t largest, uint32_t tintValue, uint32_t threshold);
