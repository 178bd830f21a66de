#include "render/shape/ArmSpan.h"

#include "engine/image/FixedPoint.h"
#include "render/shape/AngleTables.h"
#include "render/shape/FixedPower.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace {

constexpr int32_t kPixelStep = 4;          // one pixel, in quarter pixels
constexpr int32_t kFarAway = 1 << 20;      // pixels; beyond every limit
constexpr double kRoundingRoom = 1.0 / 64; // pixels; far more than any position is rounded by
constexpr int32_t kShortSpan = 12;         // not worth trimming
constexpr double kWhole = 4294967295.0;
constexpr double kCautious = 1.0 - 1e-6; // for bounds that are rounded
constexpr PixelRange kNone = {0, -1};
// Slopes below this move the centre line less than a hundredth of a quarter pixel over the longest walk.
constexpr double kLevelSlope = 1e-8;

// A position in quarter pixels as a pixel that is surely not above, or not below it. Counted from far away
// nothing is negative, and truncating is the way down.
int32_t PixelBelow(double position) {
    const double pixel = std::clamp<double>(position / kPixelStep, -kFarAway, kFarAway);
    return static_cast<int32_t>(pixel - kRoundingRoom + 2 * kFarAway) - 2 * kFarAway;
}
int32_t PixelAbove(double position) {
    return -PixelBelow(-position);
}

PixelRange Intersect(const PixelRange &a, const PixelRange &b) {
    return {std::max(a.from, b.from), std::min(a.to, b.to)};
}

// The pixel that the scan across starts from, toward smaller positions; toward larger ones it starts next to
// it.
int32_t ScanStart(double centre) {
    return static_cast<int32_t>(centre) / kPixelStep;
}

// What is scanned at a step. The two scans are limited each on its own side only, so a centre line beyond a
// limit is followed there by one of them: meant so.
PixelRange ScanRange(const Arm &arm, double centre, double reach) {
    const int32_t start = ScanStart(centre);
    const int32_t from =
        start < -arm.minorLimit ? start + 1 : std::max(PixelBelow(centre - reach), -arm.minorLimit);
    const int32_t to =
        start + 1 > arm.minorLimit ? start : std::min(PixelAbove(centre + reach), arm.minorLimit);
    return {from, to};
}

uint32_t ArmPixelValue(const Arm &arm, int32_t position, double centre, int32_t x) {
    const double coverage = ArmCoverage(arm, centre, x);
    if (coverage <= 0.0)
        return 0;
    const uint32_t distance = MeasureDistance(position - arm.majorPhase, x - arm.minorPhase);
    return Mul(ShareOfCoverage(coverage), ValueAt(*arm.values, distance));
}

// Whether any pixel across a step has a value of at least `threshold`.
bool StepReaches(const Arm &arm, int32_t step, uint32_t threshold) {
    const int32_t position = step * kPixelStep;
    const double centre = ArmCentre(arm, position);
    const PixelRange scanned = ScanRange(arm, centre, arm.reach);
    const auto reaches = [&](int32_t pixel) {
        return ArmPixelValue(arm, position, centre, pixel * kPixelStep) >= threshold;
    };
    // The pixel nearest to the centre line is nearly always enough.
    const int32_t nearest = static_cast<int32_t>(std::lround(centre / kPixelStep));
    if (nearest >= scanned.from && nearest <= scanned.to && reaches(nearest))
        return true;
    // Values fall with the distance from the phase point, so that what reaches is found from the end near it.
    const bool isFromNear = std::abs(scanned.from * kPixelStep - arm.minorPhase) <=
                            std::abs(scanned.to * kPixelStep - arm.minorPhase);
    for (int32_t i = 0; i <= scanned.to - scanned.from; ++i)
        if (reaches(isFromNear ? scanned.from + i : scanned.to - i))
            return true;
    return false;
}

int32_t NearestToZero(const PixelRange &range) {
    return range.from > 0 ? range.from : range.to < 0 ? -range.to : 0;
}

// Steps from the centre that surely reach the threshold: at each of them a pixel lies within half a pixel of
// the centre line, and its coverage and its distance are bounded.
int32_t CountSafeSteps(const Arm &arm, uint32_t threshold) {
    const double nearCoverage = std::min(0.5 + (arm.halfWidth - 2.0) * 0.25 * arm.edgeSlope, 1.0) - 1e-9;
    if (nearCoverage <= 0.0)
        return 0;
    const uint32_t share = static_cast<uint32_t>(std::max(ShareOfCoverage(nearCoverage), 16u)) - 16;
    const uint32_t count = CountValues(threshold, arm.values->count - 1, [&](uint32_t distance) {
        return Mul(share, ValueAt(*arm.values, distance));
    });
    double steps = ((count / 10.0 - 4.0) / arm.stretch - 4.0) / kPixelStep - 1.0;
    if (arm.slope != 0.0) // no nearer to a limit than two pixels
        steps = std::min(steps, (arm.minorLimit - 3.0 - std::fabs(arm.crossing)) / std::fabs(arm.slope));
    else if (std::fabs(arm.crossing) > (arm.minorLimit - 3.0) * kPixelStep)
        return 0;
    return static_cast<int32_t>(std::clamp<double>(steps, 0.0, arm.majorLimit));
}

// Walks in the direction of `sign` until the arm has faded out or the limit is passed. Toward larger
// positions the first step is the centre's, toward smaller ones the next: of two opposite arms only one draws
// the centre.
PixelRange WalkArm(const Arm &arm, int32_t sign, uint32_t threshold, const std::atomic<uint8_t> &abort) {
    const int32_t first = sign > 0 ? 0 : 1;
    int32_t step = std::max(first, CountSafeSteps(arm, threshold));
    while (step <= arm.majorLimit && abort.load(std::memory_order_relaxed) == 0 &&
           StepReaches(arm, sign * step, threshold))
        ++step;
    // The step that did not reach is still drawn, but nothing of it is above the threshold.
    return sign > 0 ? PixelRange{first, step - 1} : PixelRange{-(step - 1), -first};
}

// Rows above and below, or columns left and right, that a walk may cover across.
PixelRange AcrossWalk(const Arm &arm, const PixelRange &walked) {
    const double one = ArmCentre(arm, walked.from * kPixelStep),
                 other = ArmCentre(arm, walked.to * kPixelStep);
    return {PixelBelow(std::min(one, other) - arm.reach), PixelAbove(std::max(one, other) + arm.reach)};
}

// Beyond a limit a row is covered only from the side of the scan that starts beyond it, which is at one end
// of the walk.
PixelRange TrimBeyondLimit(const Arm &arm, int32_t row, PixelRange steps) {
    if (std::abs(row) <= arm.minorLimit)
        return steps;
    const auto covered = [&](int32_t step) {
        const int32_t start = ScanStart(ArmCentre(arm, step * kPixelStep));
        return row > 0 ? start >= row : start < row;
    };
    while (steps.from <= steps.to && !covered(steps.from))
        ++steps.from;
    while (steps.from <= steps.to && !covered(steps.to))
        --steps.to;
    return steps;
}

// Steps of a walk along x at which the arm may cover a row.
PixelRange StepsOverRow(const Arm &arm, const PixelRange &walked, int32_t row, double reach) {
    const double fromCentre = row * kPixelStep - arm.crossing;
    PixelRange steps = walked;
    if (std::fabs(arm.slope) > kLevelSlope) {
        const double one = (fromCentre - reach) / arm.slope, other = (fromCentre + reach) / arm.slope;
        steps = Intersect(walked, {PixelBelow(std::min(one, other)), PixelAbove(std::max(one, other))});
    } else if (std::fabs(fromCentre) > reach + 1.0) {
        return kNone;
    }
    return TrimBeyondLimit(arm, row, steps);
}

// The part of a row within `reach` of the centre line.
PixelRange SpanWithin(const Arm &arm, const PixelRange &walked, int32_t row, double reach) {
    return arm.majorIsY ? ScanRange(arm, ArmCentre(arm, row * kPixelStep), reach)
                        : StepsOverRow(arm, walked, row, reach);
}

} // namespace

Arm MakeArm(const StampContext &context, int32_t px, int32_t py, const ArmShape &shape,
            const ValueTable *values, const std::atomic<uint8_t> &abort) {
    const float sx = gSineTable[ReduceAngle(shape.angle)];
    const float sy = -gSineTable[ReduceAngle(ReduceAngle(shape.angle) + kFullTurn / 4)];
    const bool majorIsY = std::fabs(sx) < std::fabs(sy);
    const double major = majorIsY ? sy : sx, minor = majorIsY ? sx : sy;
    Arm arm{};
    arm.majorIsY = majorIsY;
    arm.majorPhase = majorIsY ? py : px;
    arm.minorPhase = majorIsY ? px : py;
    arm.majorLimit = (majorIsY ? context.limitY : context.limitX) / kPixelStep;
    arm.minorLimit = (majorIsY ? context.limitX : context.limitY) / kPixelStep;
    arm.slope = minor / major;
    arm.crossing = arm.minorPhase - arm.slope * arm.majorPhase;
    arm.halfWidth = 2.0 * shape.widthFactor / std::fabs(major);
    arm.edgeSlope = std::min(0.5, std::fabs(major) * shape.sharpnessFactor);
    arm.reach = arm.halfWidth + 2.0 / arm.edgeSlope;
    arm.stretch = std::sqrt(1.0 + arm.slope * arm.slope);
    arm.back = arm.reach * std::fabs(arm.slope) / arm.stretch;
    arm.values = values;
    arm.largestShare = ShareOfCoverage(std::min(0.5 + arm.halfWidth * 0.25 * arm.edgeSlope, 1.0));
    arm.walked = WalkArm(arm, major < 0.0 ? -1 : 1, context.floor / 4, abort);
    const PixelRange across = AcrossWalk(arm, arm.walked), along = arm.walked;
    arm.box = majorIsY ? IntRect{across.from, along.from, across.to + 1, along.to + 1}
                       : IntRect{along.from, across.from, along.to + 1, across.to + 1};
    return arm;
}

// A pixel of a step lies at least as far from the phase point as the step does along the centre line, less
// what the pixel may lie back from it. Its value is at most the largest share of the value at that distance.
PixelRange WalkAbove(const Arm &arm, uint32_t level) {
    const double along = std::min(double{1.0} * level / arm.largestShare * kWhole * kCautious, kWhole);
    const double distance = ReachOfLevel(*arm.values, static_cast<uint32_t>(along)) / 10.0 + 1.0;
    const double steps = (distance + arm.back) / arm.stretch / kPixelStep + 2.0;
    const int32_t furthest = static_cast<int32_t>(std::min<double>(steps, kFarAway));
    return Intersect(arm.walked, {-furthest, furthest});
}

PixelRange ArmRows(const Arm &arm, const PixelRange &walked) {
    return arm.majorIsY || walked.from > walked.to ? walked : AcrossWalk(arm, walked);
}

PixelRange ArmSpan(const Arm &arm, const PixelRange &walked, int32_t row) {
    return SpanWithin(arm, walked, row, arm.reach);
}

// What is nearest to the phase point bounds the value along the arm on the whole row, and with it the
// coverage that is needed, and with that the distance from the centre line.
PixelRange SpanAbove(const Arm &arm, const PixelRange &walked, int32_t row, uint32_t level) {
    const PixelRange span = ArmSpan(arm, walked, row);
    if (span.to - span.from < kShortSpan)
        return span;
    const int32_t nearest = arm.majorIsY ? std::abs(row) : NearestToZero(span);
    const double distance = ((nearest - 1.0) * kPixelStep * arm.stretch - arm.back) * 10.0 - 1.0;
    const uint32_t along = ValueAt(*arm.values, static_cast<uint32_t>(std::max(distance, 0.0)));
    if (along < level)
        return kNone;
    const double coverage = NeededCoverage(double{1.0} * level / along);
    const double reach = arm.halfWidth + (0.5 - coverage) * 4.0 / arm.edgeSlope;
    return reach > 0.0 ? Intersect(span, SpanWithin(arm, walked, row, reach)) : kNone;
}
