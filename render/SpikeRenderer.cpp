#include "render/SpikeRenderer.h"

#include "diag/ErrorReport.h"
#include "engine/FixedPoint.h"
#include "render/AngleTables.h"
#include "render/Rainbow.h"
#include "render/SpikeProfile.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

constexpr int32_t kPixelStep = 4; // one pixel, in quarter pixels

// By how much the entry array grows at least on the scan toward smaller and toward larger positions; twenty
// times apart: meant so.
constexpr uint64_t kGrowthTowardSmaller = uint64_t{256} * 1024;
constexpr uint64_t kGrowthTowardLarger = uint64_t{5} * 1024 * 1024;

constexpr uint32_t kLowMemorySite = 237;

// One arm as it is walked: along its major axis in steps of a pixel, scanning a row across the minor axis at
// each. Positions are quarter pixels from the origin of the star's pixel.
struct ArmWalk {
    const StampContext &context;
    StarStamp *stamp;
    bool majorIsY;
    int32_t majorPhase, minorPhase;
    int32_t majorLimit, minorLimit;
    int32_t step;       // along the major axis, +4 or -4
    double slope;       // minor per major
    double crossing;    // minor position of the centre line at major position 0
    double halfWidth;   // of the arm on a row
    double edgeSlope;   // of its edges
    uint32_t threshold; // values below it are not drawn
};

// One row: the major position, where the centre line crosses it, and the largest value met so far.
struct ArmRow {
    int32_t position;
    double centre;
    uint32_t largest;
};

ArmWalk BeginWalk(const StampContext &context, StarStamp *stamp, int32_t px, int32_t py,
                  const ArmShape &arm) {
    const float sx = gSineTable[ReduceAngle(arm.angle)];
    const float sy = -gSineTable[ReduceAngle(ReduceAngle(arm.angle) + kFullTurn / 4)];
    const bool majorIsY = std::fabs(sx) < std::fabs(sy);
    const double major = majorIsY ? sy : sx, minor = majorIsY ? sx : sy;
    ArmWalk walk{context, stamp, majorIsY, 0, 0, 0, 0, 0, 0.0, 0.0, 0.0, 0.0, context.floor / 4};
    walk.majorPhase = majorIsY ? py : px;
    walk.minorPhase = majorIsY ? px : py;
    walk.majorLimit = majorIsY ? context.limitY : context.limitX;
    walk.minorLimit = majorIsY ? context.limitX : context.limitY;
    walk.step = major < 0.0 ? -kPixelStep : kPixelStep;
    walk.slope = minor / major;
    walk.crossing = walk.minorPhase - walk.slope * walk.majorPhase;
    walk.halfWidth = 2.0 * arm.widthFactor / std::fabs(major);
    walk.edgeSlope = std::min(0.5, std::fabs(major) * arm.sharpnessFactor);
    return walk;
}

// How much of the pixel at minor position x the arm covers: 0 or less outside, at most 1.
double ArmCoverage(const ArmWalk &walk, double centre, int32_t x) {
    const double rising = 0.5 - ((centre - walk.halfWidth) - x) * 0.25 * walk.edgeSlope;
    const double falling = ((centre + walk.halfWidth) - x) * 0.25 * walk.edgeSlope + 0.5;
    return std::min(std::min(rising, falling), 1.0);
}

// Draws the pixel at minor position x. False when memory ran out.
bool DrawArmPixel(const ArmWalk &walk, ArmRow *row, int32_t x, double coverage, uint64_t growth) {
    const uint32_t distance = MeasureDistance(row->position - walk.majorPhase, x - walk.minorPhase);
    const uint32_t share = static_cast<uint32_t>(std::pow(coverage, 1.6) * kFractionOne + 0.5);
    const uint32_t value = Mul(share, SpikeValueAt(distance));
    row->largest = std::max(row->largest, value);
    if (value < walk.threshold)
        return true;
    const RainbowFactors factors = RainbowFactorsAt(walk.context, distance);
    return AppendStampEntry(walk.stamp, walk.majorIsY ? x : row->position, walk.majorIsY ? row->position : x,
                            factors.factor, value, growth);
}

// Scans outward until the arm's edge or the limit. False when memory ran out.
bool ScanTowardSmaller(const ArmWalk &walk, ArmRow *row, int32_t from) {
    for (int32_t x = from; x >= -walk.minorLimit; x -= kPixelStep) {
        const double coverage = ArmCoverage(walk, row->centre, x);
        if (coverage <= 0.0)
            break;
        if (!DrawArmPixel(walk, row, x, coverage, kGrowthTowardSmaller))
            return false;
    }
    return true;
}

bool ScanTowardLarger(const ArmWalk &walk, ArmRow *row, int32_t from) {
    for (int32_t x = from; x <= walk.minorLimit; x += kPixelStep) {
        const double coverage = ArmCoverage(walk, row->centre, x);
        if (coverage <= 0.0)
            break;
        if (!DrawArmPixel(walk, row, x, coverage, kGrowthTowardLarger))
            return false;
    }
    return true;
}

bool ScanRow(const ArmWalk &walk, ArmRow *row) {
    const int32_t start = static_cast<int32_t>(row->centre) / kPixelStep * kPixelStep;
    return ScanTowardSmaller(walk, row, start) && ScanTowardLarger(walk, row, start + kPixelStep);
}

bool WalkArm(const ArmWalk &walk) {
    // Of two opposite arms only the one toward positive coordinates draws the centre row: meant so.
    const int32_t start = walk.step > 0 ? 0 : walk.step;
    for (int32_t position = start; std::abs(position) <= walk.majorLimit; position += walk.step) {
        ArmRow row{position, walk.crossing + walk.slope * position, 0};
        if (!ScanRow(walk, &row))
            return false;
        if (row.largest < walk.threshold)
            break;
    }
    return true;
}

} // namespace

double StarSharpnessFactor(const StampContext &context) {
    const double edge = std::pow(context.settings.spikeSharpness / 100.0, 3.5) + 0.003;
    return edge * 500000.0 / context.diagonal / context.settings.scale;
}

double StarWidthFactor(const StampContext &context) {
    return context.settings.scale * 0.005;
}

uint32_t SpikeBrightness(int32_t intensityPercent) {
    return static_cast<uint32_t>(std::pow(intensityPercent / 100.0, 2.8) * kFractionOne);
}

bool DrawArm(const StampContext &context, StarStamp *stamp, int32_t px, int32_t py, const ArmShape &arm) {
    if (arm.length < 1 || arm.brightness < context.floor / 4)
        return true;
    SelectSpikeProfile({arm.length, arm.decay, arm.brightness, context.settings.scale, context.diagonal});
    if (WalkArm(BeginWalk(context, stamp, px, py, arm)))
        return true;
    ReportError({kLowMemorySite, kUserMessage, 0}, kWarningIcon, kTitleWarning,
                "Low memory.  Check image - some effects may not be rendered.");
    return false;
}
