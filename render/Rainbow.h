// The rainbow along a spike: three colour factors that depend only on the distance from the star's centre.
#pragma once

#include "render/StampContext.h"

#include <cstdint>

struct RainbowFactors {
    uint32_t factor[3]; // for red, green, blue; fractions
};

// `distance` in tenths of a quarter pixel. The angle tables must be built.
RainbowFactors RainbowFactorsAt(const StampContext &context, uint32_t distance);
