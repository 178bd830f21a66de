#include "render/Rainbow.h"

#include "engine/FixedPoint.h"
#include "render/AngleTables.h"

namespace {

constexpr uint32_t kOnePercent = 42949672; // of 2^32
constexpr uint32_t kRampPhases = 2000;     // the tint fades in over these
constexpr int32_t kPeriodBase = 107;
constexpr uint32_t kThirdTurn = kFullTurn / 3;

// How far the rainbow has advanced at a distance, in tenths of a degree; independent of the zoom.
uint32_t RainbowPhase(const StampContext &context, uint32_t distance) {
    const double turns = distance / context.settings.scale * 300000000.0 / context.diagonal;
    const uint32_t reduced = static_cast<uint32_t>(static_cast<uint64_t>(turns));
    const uint32_t period = static_cast<uint32_t>(kPeriodBase - context.settings.rainbowFrequency);
    return reduced / (period * period);
}

} // namespace

RainbowFactors RainbowFactorsAt(const StampContext &context, uint32_t distance) {
    const uint32_t phase = RainbowPhase(context, distance);
    uint32_t amplitude = static_cast<uint32_t>(context.settings.rainbowIntensity) * kOnePercent;
    if (phase < kRampPhases)
        amplitude = amplitude / kRampPhases * phase;
    const auto factorAt = [&](uint32_t shift) {
        return kFractionOne - Mul(gRainbowTable[(phase + shift) % kFullTurn], amplitude);
    };
    return RainbowFactors{{factorAt(kThirdTurn), factorAt(2 * kThirdTurn), factorAt(0)}};
}
