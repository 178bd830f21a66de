#include "bench/plain/PlainStamps.h"
#include "engine/image/FixedPoint.h"
#include "render/shape/AngleTables.h"
#include "render/shape/EffectTypes.h"
#include "render/shape/Rainbow.h"
#include "render/stamp/SecondarySpikes.h"
#include "render/stamp/StarBuilder.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace plain {

namespace {

constexpr uint32_t kOnePercent = 42949672; // of 2^32
constexpr uint32_t kRampSteps = 2000;      // the tint fades in over these
constexpr int32_t kPeriodBase = 107;
constexpr uint32_t kThirdTurn = kFullTurn / 3;

// How far the rainbow has advanced at a distance, in tenths of a degree; independent of the zoom.
uint32_t RainbowPhase(const StampContext &context, uint32_t distance) {
    const double turns = distance / context.settings.scale * 300000000.0 / context.diagonal;
    const uint32_t reduced = static_cast<uint32_t>(static_cast<uint64_t>(turns));
    const uint32_t period = static_cast<uint32_t>(kPeriodBase - context.settings.rainbowFrequency);
    return reduced / (period * period);
}

RainbowFactors RainbowFactorsAt(const StampContext &context, uint32_t distance) {
    const uint32_t phase = RainbowPhase(context, distance);
    uint32_t amplitude = static_cast<uint32_t>(context.settings.rainbowIntensity) * kOnePercent;
    if (phase < kRampSteps)
        amplitude = amplitude / kRampSteps * phase;
    const auto factorAt = [&](uint32_t shift) {
        return kFractionOne - Mul(gRainbowTable[(phase + shift) % kFullTurn], amplitude);
    };
    return RainbowFactors{{factorAt(kThirdTurn), factorAt(2 * kThirdTurn), factorAt(0)}};
}

constexpr int64_t kDistanceMemoSize = 429483; // squared distances below this are kept
constexpr uint32_t kProfileMemoSize = 32768;  // distances below this are kept
constexpr int32_t kPixelStep = 4;             // one pixel, in quarter pixels

// Ten times a square root of an integer is never a whole number and a half, so adding a half and truncating
// is rounding.
uint32_t ComputeDistance(int64_t squared) {
    return static_cast<uint32_t>(10.0 * std::sqrt(static_cast<double>(squared)) + 0.5);
}

bool FitsInt16(int32_t value) {
    return value >= std::numeric_limits<int16_t>::min() && value <= std::numeric_limits<int16_t>::max();
}

// The fall-off of the arm that is being drawn.
struct Profile {
    int32_t length, decay;
    uint32_t brightness;
    double exponent;
    std::vector<uint32_t> memo; // 0 stands for "not yet computed"
};

// Arms of one fall-off in a row share its memo.
void SelectProfile(const ArmShape &arm, Profile *profile) {
    if (!profile->memo.empty() && arm.length == profile->length && arm.decay == profile->decay &&
        arm.brightness == profile->brightness)
        return;
    const double exponent = -std::pow(arm.decay / 100.0, 0.28) * 200.0 / (arm.length + 28);
    *profile = {arm.length, arm.decay, arm.brightness, exponent, std::vector<uint32_t>(kProfileMemoSize)};
}

// Flat at full brightness near the centre, then a power of the distance.
uint32_t ComputeSpikeValue(const StampContext &context, const Profile &profile, uint32_t distance) {
    const double pixels = distance * 1500.0 / context.diagonal / context.settings.scale;
    const double level = std::pow(pixels + 1.0, profile.exponent) * 8.0;
    return level < 1.0 ? static_cast<uint32_t>(profile.brightness * level) : profile.brightness;
}

// One arm as it is walked: along its major axis in steps of a pixel, scanning a row across the minor axis at
// each. Positions are quarter pixels from the origin of the star's pixel.
struct ArmWalk {
    const StampContext &context;
    Stamp *stamp;
    Profile *profile;
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

uint32_t SpikeValueAt(const ArmWalk &walk, uint32_t distance) {
    if (distance >= kProfileMemoSize)
        return ComputeSpikeValue(walk.context, *walk.profile, distance);
    uint32_t &known = walk.profile->memo[distance];
    if (known == 0)
        known = ComputeSpikeValue(walk.context, *walk.profile, distance);
    return known;
}

// One row: the major position, where the centre line crosses it, and the largest value met so far.
struct ArmRow {
    int32_t position;
    double centre;
    uint32_t largest;
};

ArmWalk BeginWalk(const StampContext &context, int32_t px, int32_t py, const ArmShape &arm, Profile *profile,
                  Stamp *stamp) {
    const float sx = gSineTable[ReduceAngle(arm.angle)];
    const float sy = -gSineTable[ReduceAngle(ReduceAngle(arm.angle) + kFullTurn / 4)];
    const bool majorIsY = std::fabs(sx) < std::fabs(sy);
    const double major = majorIsY ? sy : sx, minor = majorIsY ? sx : sy;
    ArmWalk walk{context, stamp, profile, majorIsY, 0, 0, 0, 0, 0, 0.0, 0.0, 0.0, 0.0, context.floor / 4};
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

void DrawArmPixel(const ArmWalk &walk, ArmRow *row, int32_t x, double coverage) {
    const uint32_t distance = MeasureDistance(row->position - walk.majorPhase, x - walk.minorPhase);
    const uint32_t share = static_cast<uint32_t>(std::pow(coverage, 1.6) * kFractionOne + 0.5);
    const uint32_t value = Mul(share, SpikeValueAt(walk, distance));
    row->largest = std::max(row->largest, value);
    if (value >= walk.threshold)
        AppendEntry(walk.stamp, walk.majorIsY ? x : row->position, walk.majorIsY ? row->position : x,
                    RainbowFactorsAt(walk.context, distance).factor, value);
}

// Scans outward until the arm's edge or the limit.
void ScanRow(const ArmWalk &walk, ArmRow *row) {
    const int32_t start = static_cast<int32_t>(row->centre) / kPixelStep * kPixelStep;
    double coverage;
    for (int32_t x = start; x >= -walk.minorLimit && (coverage = ArmCoverage(walk, row->centre, x)) > 0.0;
         x -= kPixelStep)
        DrawArmPixel(walk, row, x, coverage);
    for (int32_t x = start + kPixelStep;
         x <= walk.minorLimit && (coverage = ArmCoverage(walk, row->centre, x)) > 0.0; x += kPixelStep)
        DrawArmPixel(walk, row, x, coverage);
}

void DrawArm(const ArmWalk &walk) {
    // Of two opposite arms only the one toward positive coordinates draws the centre row: meant so.
    const int32_t start = walk.step > 0 ? 0 : walk.step;
    for (int32_t position = start; std::abs(position) <= walk.majorLimit; position += walk.step) {
        ArmRow row{position, walk.crossing + walk.slope * position, 0};
        ScanRow(walk, &row);
        if (row.largest < walk.threshold)
            break;
    }
}

std::vector<ArmShape> ListArms(const StampContext &context) {
    const RenderSettings &settings = context.settings;
    const ArmList list = LayoutStar({settings.effectType, settings.angle, settings.numberOfPoints,
                                     settings.length, SpikeBrightness(settings.intensity)});
    std::vector<ArmShape> shapes;
    for (int32_t i = 0; i < list.count; ++i)
        shapes.push_back({StarSharpnessFactor(context), StarWidthFactor(context), list.arms[i].angle,
                          list.arms[i].length, settings.intensity, list.arms[i].brightness});
    if (settings.secondaryIntensity > 0) {
        shapes.resize(shapes.size() + kBurstRays);
        ListSecondarySpikes(context, &shapes[shapes.size() - kBurstRays]);
    }
    return shapes;
}

} // namespace

uint32_t MeasureDistance(int32_t dx, int32_t dy) {
    static uint16_t memo[kDistanceMemoSize];
    const int64_t squared = int64_t{dx} * dx + int64_t{dy} * dy;
    if (squared >= kDistanceMemoSize)
        return ComputeDistance(squared);
    uint16_t &known = memo[squared];
    if (known == 0)
        known = static_cast<uint16_t>(ComputeDistance(squared));
    return known;
}

void AppendEntry(Stamp *stamp, int32_t quarterX, int32_t quarterY, const uint32_t factor[3], uint32_t value) {
    const int32_t dx = quarterX / kPixelStep, dy = quarterY / kPixelStep;
    if (FitsInt16(dx) && FitsInt16(dy))
        stamp->push_back(
            {static_cast<int16_t>(dx), static_cast<int16_t>(dy), {factor[0], factor[1], factor[2]}, value});
}

Stamp DrawStar(const StampContext &context, int32_t px, int32_t py) {
    Stamp stamp;
    Profile profile{};
    if (context.settings.length <= 0)
        return stamp;
    for (const ArmShape &arm : ListArms(context)) {
        if (arm.length < 1 || arm.brightness < context.floor / 4)
            continue;
        SelectProfile(arm, &profile);
        DrawArm(BeginWalk(context, px, py, arm, &profile, &stamp));
    }
    return stamp;
}

} // namespace plain
