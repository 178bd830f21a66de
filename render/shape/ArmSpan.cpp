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
constexpr int32_t kShortSpan = 12;         // not worth trimming
constexpr double kWhole = 4294967295.0;
constexpr double kCautious = 1.0 - 1e-6; // for bounds that are rounded
constexpr PixelRange kNone = {0, -1};
// Slopes below this move the centre line less than kLevelRoom over the longest walk.
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

// A pixel of a step, as far as its value is concerned.
struct PixelAcross {
    int32_t pixel;
    uint32_t share, along; // the value is their product
};

ArmPixel MeasureAt(const Arm &arm, int32_t major, int32_t minor) {
    const double coverage = ArmCoverage(arm, ArmCentre(arm, major), minor);
    const uint32_t distance = MeasureDistance(major - arm.majorPhase, minor - arm.minorPhase);
    return {distance, coverage <= 0.0 ? 0 : ShareOfCoverage(coverage), SpikeValueAt(*arm.values, distance)};
}

PixelAcross MeasurePixel(const Arm &arm, int32_t position, int32_t pixel) {
    const ArmPixel at = MeasureAt(arm, position, pixel * kPixelStep);
    return {pixel, at.share, at.along};
}

// Whether a pixel between two reaches the threshold. From `inner` to `outer` the value along the arm falls
// and the share rises, so that the product of the higher ones bounds everything between.
template <typename Measure>
bool AnyReaches(const PixelAcross &inner, const PixelAcross &outer, uint32_t threshold, Measure measure) {
    if (std::abs(outer.pixel - inner.pixel) < 2 || Mul(outer.share, inner.along) < threshold)
        return false;
    const PixelAcross middle = measure(inner.pixel + (outer.pixel - inner.pixel) / 2);
    return Mul(middle.share, middle.along) >= threshold || AnyReaches(inner, middle, threshold, measure) ||
           AnyReaches(middle, outer, threshold, measure);
}

// Whether any pixel across a step has a value of at least `threshold`. Beyond the centre line on one side and
// the phase point on the other both factors of a value fall: only the first pixel there matters, and those
// between.
bool StepReaches(const Arm &arm, int32_t step, uint32_t threshold) {
    const int32_t position = step * kPixelStep;
    const double centre = ArmCentre(arm, position);
    const PixelRange scanned = ScanRange(arm, centre, arm.reach);
    if (scanned.from > scanned.to)
        return false;
    const bool isAbove = centre >= arm.minorPhase;
    const int32_t next = arm.minorPhase > 0 ? 1 : 0, truncated = static_cast<int32_t>(centre / kPixelStep);
    const int32_t outer = isAbove || centre < 0.0 ? truncated : 1; // not beyond the centre line
    const auto measure = [&](int32_t pixel) {
        return MeasurePixel(arm, position, std::clamp(pixel, scanned.from, scanned.to));
    };
    const auto reaches = [&](const PixelAcross &p) { return Mul(p.share, p.along) >= threshold; };
    const PixelAcross last = measure(outer), first = measure(isAbove ? next : 0);
    return reaches(last) || reaches(measure(isAbove ? outer + 1 : outer - 1)) || reaches(first) ||
           reaches(measure(isAbove ? 0 : next)) || AnyReaches(first, last, threshold, measure);
}

// How far from the phase point a pixel is sure to reach the threshold that lies at most `across` off the
// centre line; quarter pixels, a little less.
double SureDistance(const Arm &arm, double across, uint32_t threshold) {
    const double coverage = std::min(0.5 + (arm.halfWidth - across) * 0.25 * arm.edgeSlope, 1.0) - 1e-9;
    if (coverage <= 0.0)
        return 0.0;
    const uint32_t share = static_cast<uint32_t>(std::max(ShareOfCoverage(coverage), 16u)) - 16;
    return CountValues(threshold, arm.values->count - 1,
                       [&](uint32_t distance) { return Mul(share, SpikeValueAt(*arm.values, distance)); }) /
               10.0 -
           1.0;
}

// Steps from the centre that surely reach the threshold: at each of them a pixel lies within half a pixel of
// the centre line, and its coverage and its distance are bounded.
int32_t CountStepsNearLine(const Arm &arm, uint32_t threshold) {
    double steps = ((SureDistance(arm, 2.0, threshold) - 3.0) / arm.stretch - 4.0) / kPixelStep - 1.0;
    if (arm.slope != 0.0) // no nearer to a limit than two pixels
        steps = std::min(steps, (arm.minorLimit - 3.0 - std::fabs(arm.crossing)) / std::fabs(arm.slope));
    else if (std::fabs(arm.crossing) > (arm.minorLimit - 3.0) * kPixelStep)
        return 0;
    return static_cast<int32_t>(std::clamp<double>(steps, 0.0, arm.majorLimit));
}

// The same, further out: a wide soft arm is brightest off its centre line, on the side of the phase point,
// where a pixel lies nearer to it. A pixel `off` the line is bounded like one at the line, from the step on
// at which it does not lie beyond the phase point. So far off (four pixels and more) it is scanned beyond the
// limits too.
int32_t CountSafeSteps(const Arm &arm, uint32_t threshold) {
    constexpr double kFirstOff = 16.0, kGrowth = 1.1;
    const double slope = std::fabs(arm.slope), squared = arm.stretch * arm.stretch;
    double safe = CountStepsNearLine(arm, threshold);
    if (slope <= kLevelSlope)
        return static_cast<int32_t>(safe);
    for (double off = kFirstOff; off < arm.reach; off *= kGrowth) {
        const double first = ((off + 4.0) / slope + 4.0) / kPixelStep + 1.0;
        if (first > safe)
            break;
        const double sure = SureDistance(arm, off + 3.0, threshold), inner = off - 3.0;
        const double rest = sure * sure * squared - inner * inner;
        if (sure > 0.0 && rest > 0.0)
            safe = std::max(safe, ((slope * inner + std::sqrt(rest)) / squared - 5.0) / kPixelStep - 1.0);
    }
    return static_cast<int32_t>(std::clamp<double>(safe, 0.0, arm.majorLimit));
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

ArmPixel MeasureArmPixel(const Arm &arm, int32_t row, int32_t column) {
    const int32_t y = row * kPixelStep, x = column * kPixelStep;
    return arm.majorIsY ? MeasureAt(arm, y, x) : MeasureAt(arm, x, y);
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
    const double along = SpikeValueBound(*arm.values, static_cast<uint32_t>(std::max(distance, 0.0)));
    if (along < level)
        return kNone;
    const double coverage = NeededCoverage(level / along);
    const double reach = arm.halfWidth + (0.5 - coverage) * 4.0 / arm.edgeSlope;
    return reach > 0.0 ? Intersect(span, SpanWithin(arm, walked, row, reach)) : kNone;
}

ArmLine LineOf(const Arm &arm) {
    if (arm.majorIsY)
        return {arm.crossing / kPixelStep, arm.slope, 1.0 / kPixelStep};
    // A level line may as well rise a little.
    const double slope = std::fabs(arm.slope) > kLevelSlope ? arm.slope : kLevelSlope;
    return {-arm.crossing / slope / kPixelStep, 1.0 / slope, 1.0 / std::fabs(slope) / kPixelStep};
}

bool IsWithinLimits(const Arm &arm, const IntRect &area) {
    const int32_t from = arm.majorIsY ? area.left : area.top, end = arm.majorIsY ? area.right : area.bottom;
    return from >= -arm.minorLimit && end - 1 <= arm.minorLimit;
}

// What is nearest to the phase point, as pixels lie or as the steps along the centre line do, bounds the
// value along the arm in the whole block, and with it the coverage that is needed, and with that the distance
// from the centre line.
double ReachInBlock(const Arm &arm, const IntRect &block, double level) {
    const double x = std::max(NearestToZero({block.left, block.right - 1}) - 1, 0),
                 y = std::max(NearestToZero({block.top, block.bottom - 1}) - 1, 0);
    const double along = (arm.majorIsY ? y : x) * kPixelStep * arm.stretch - arm.back;
    const double distance = std::max(std::sqrt(x * x + y * y) * kPixelStep, along) * 10.0 - 1.0;
    const double value = SpikeValueBound(*arm.values, static_cast<uint32_t>(std::max(distance, 0.0)));
    if (value < level)
        return 0.0;
    return arm.halfWidth + (0.5 - NeededCoverage(level / value)) * 4.0 / arm.edgeSlope + kLevelRoom;
}
