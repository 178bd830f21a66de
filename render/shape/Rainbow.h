// The rainbow along a spike: three colour factors that depend only on the distance from the star's centre.
//
// They take few different values: while the tint fades in there is one triple for each phase, and after that
// the triples repeat with every turn. A state is the number of a triple.
#pragma once

#include "render/shape/AngleTables.h"
#include "render/shape/StampContext.h"

#include <cstdint>

constexpr uint32_t kRampPhases = 2000; // the tint fades in over these
constexpr uint32_t kRainbowStates = kRampPhases + kFullTurn;

// Aligned so that one load takes all three.
struct alignas(16) RainbowFactors {
    uint32_t factor[3]; // for red, green, blue; fractions
};

// Whether the states at all distances are the same under two contexts.
bool SameRainbowStates(const StampContext &a, const StampContext &b);
// By how many phases the rainbow advances from one distance to the next, but for rounding; 0 where a stamp
// reaches so far that their count starts anew.
double PhasesPerDistance(const StampContext &context);
// `distance` in tenths of a quarter pixel.
uint32_t RainbowStateAt(const StampContext &context, uint32_t distance);
// The states at all distances from `nearest` to `furthest` lie in this range, both ends included.
struct StateRange {
    uint32_t first, last;
};
StateRange StatesBetween(const StampContext &context, uint32_t nearest, uint32_t furthest);
// The angle tables must be built.
RainbowFactors FactorsOfState(const StampContext &context, uint32_t state);
