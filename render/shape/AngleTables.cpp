#include "render/shape/AngleTables.h"

#include "engine/image/FixedPoint.h"

#include <cmath>

float gSineTable[kFullTurn];
uint32_t gRainbowTable[kFullTurn];

namespace {

constexpr int32_t kHalfTurn = kFullTurn / 2;
constexpr float kRadiansPerTenth = 0.0017453294f;
bool gTablesBuilt = false;

uint32_t RoundToFraction(double value) {
    return static_cast<uint32_t>(value * kFractionOne + 0.5);
}

} // namespace

void BuildAngleTables() {
    if (gTablesBuilt)
        return;
    for (int32_t i = 0; i < kHalfTurn; ++i) {
        // The product stays in single precision; the sine is taken in double and rounded once, so that every
        // compiler's library gives the same entry.
        const float radians = static_cast<float>(i) * kRadiansPerTenth;
        const float sine = static_cast<float>(std::sin(static_cast<double>(radians)));
        gSineTable[i] = sine;
        gSineTable[i + kHalfTurn] = -sine;
        gRainbowTable[i] = RoundToFraction(0.5 + 0.5 * sine);
        gRainbowTable[i + kHalfTurn] = RoundToFraction(0.5 - 0.5 * sine);
    }
    gTablesBuilt = true;
}
