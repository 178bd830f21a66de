#include "render/rows/RowsPortable.h"

#include "engine/image/FixedPoint.h"
#include "render/shape/FixedPower.h"

#include <algorithm>

namespace {

constexpr int32_t kPixelStep = 4; // quarter pixels

// A row of an arm walked along y has one centre line position, one walked along x one for each pixel.
template <bool majorIsY> void FillArmAs(const ArmPiece &piece, uint32_t *values, uint16_t *states) {
    const Arm &arm = *piece.arm;
    const int32_t y = piece.row * kPixelStep;
    const uint32_t last = arm.values->count - 1;
    for (int32_t i = 0; i < piece.count; ++i) {
        const int32_t x = (piece.from + i) * kPixelStep;
        const int32_t major = majorIsY ? y : x, minor = majorIsY ? x : y;
        const double coverage = ArmCoverage(arm, ArmCentre(arm, major), minor);
        const uint32_t distance =
            std::min(MeasureDistance(major - arm.majorPhase, minor - arm.minorPhase), last);
        const uint32_t value = arm.values->values[distance];
        states[i] = piece.stateOfDistance[distance];
        if (coverage <= 0.0 || value == 0)
            values[i] = 0;
        else
            values[i] = piece.precise ? MulPrecise(ShareOfCoverage(coverage), value)
                                      : MulFast(ShareOfCoverage(coverage), value);
    }
}

} // namespace

void FillArmPortable(const ArmPiece &piece, uint32_t *values, uint16_t *states) {
    if (piece.arm->majorIsY)
        FillArmAs<true>(piece, values, states);
    else
        FillArmAs<false>(piece, values, states);
}

void FillFlarePortable(const FlarePiece &piece, uint32_t *values) {
    const FlareStamp &flare = *piece.flare;
    const int32_t dy = piece.row * kPixelStep - flare.py;
    for (int32_t i = 0; i < piece.count; ++i)
        values[i] = ValueAt(*piece.values, MeasureDistance((piece.from + i) * kPixelStep - flare.px, dy));
}
