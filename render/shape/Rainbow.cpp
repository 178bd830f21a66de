#include "render/shape/Rainbow.h"

#include "engine/image/FixedPoint.h"

#include <algorithm>

namespace {

constexpr uint32_t kOnePercent = 42949672; // of 2^32
constexpr int32_t kPeriodBase = 107;
constexpr uint32_t kThirdTurn = kFullTurn / 3;

uint32_t PhaseLength(const StampContext &context) {
    const uint32_t root = static_cast<uint32_t>(kPeriodBase - context.settings.rainbowFrequency);
    return root * root;
}

double Advance(const StampContext &context, uint32_t distance) {
    return distance / context.settings.scale * 300000000.0 / context.diagonal;
}

// How far the rainbow has advanced at a distance, in tenths of a degree; independent of the zoom.
uint32_t RainbowPhase(const StampContext &context, uint32_t distance) {
    const uint32_t reduced = static_cast<uint32_t>(static_cast<uint64_t>(Advance(context, distance)));
    return reduced / PhaseLength(context);
}

} // namespace

bool SameRainbowStates(const StampContext &a, const StampContext &b) {
    const RenderSettings &x = a.settings, &y = b.settings;
    return x.scale == y.scale && a.diagonal == b.diagonal && x.rainbowFrequency == y.rainbowFrequency &&
           (x.rainbowIntensity == 0) == (y.rainbowIntensity == 0);
}

double PhasesPerDistance(const StampContext &context) {
    const uint32_t furthest = 40u * static_cast<uint32_t>(std::max(context.limitX, context.limitY) + 16);
    return Advance(context, furthest) < 0x1p32 ? Advance(context, 1) / PhaseLength(context) : 0.0;
}

// Without a rainbow every triple is the same one.
uint32_t RainbowStateAt(const StampContext &context, uint32_t distance) {
    if (context.settings.rainbowIntensity == 0)
        return 0;
    const uint32_t phase = RainbowPhase(context, distance);
    return phase < kRampPhases ? phase : kRampPhases + phase % kFullTurn;
}

// Phases rise with the distance, but where their count starts anew.
StateRange StatesBetween(const StampContext &context, uint32_t nearest, uint32_t furthest) {
    if (context.settings.rainbowIntensity == 0)
        return {0, 0};
    if (Advance(context, furthest) >= 0x1p32)
        return {0, kRainbowStates - 1};
    const uint32_t first = RainbowPhase(context, nearest), last = RainbowPhase(context, furthest);
    if (last < kRampPhases)
        return {first, last};
    const uint32_t turned = std::max(first, kRampPhases);
    const bool isOneTurn = turned / kFullTurn == last / kFullTurn;
    const uint32_t lowest = kRampPhases + (isOneTurn ? turned % kFullTurn : 0);
    return {std::min(first, lowest), isOneTurn ? kRampPhases + last % kFullTurn : kRainbowStates - 1};
}

RainbowFactors FactorsOfState(const StampContext &context, uint32_t state) {
    const uint32_t phase = state < kRampPhases ? state : state - kRampPhases;
    uint32_t amplitude = static_cast<uint32_t>(context.settings.rainbowIntensity) * kOnePercent;
    if (state < kRampPhases)
        amplitude = amplitude / kRampPhases * phase;
    const auto factorAt = [&](uint32_t shift) {
        return kFractionOne - Mul(gRainbowTable[(phase + shift) % kFullTurn], amplitude);
    };
    return RainbowFactors{{factorAt(kThirdTurn), factorAt(2 * kThirdTurn), factorAt(0)}};
}
