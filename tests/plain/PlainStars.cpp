#include "tests/plain/PlainStamps.h"

#include "diag/BufferUsage.h"
#include "diag/ErrorReport.h"
#include "engine/FixedPoint.h"
#include "render/AngleTables.h"
#include "render/EffectTypes.h"
#include "render/Rainbow.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
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

} // namespace

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

namespace {

bool FitsInt16(int32_t value) {
    return value >= std::numeric_limits<int16_t>::min() && value <= std::numeric_limits<int16_t>::max();
}

} // namespace

bool ReserveStampEntry(StarStamp *stamp, uint64_t stepBytes) {
    if (stamp->count == std::numeric_limits<int32_t>::max())
        return false;
    const uint64_t needed = (static_cast<uint64_t>(stamp->count) + 1) * sizeof(StampEntry);
    if (stamp->capacityBytes >= needed)
        return true;
    // Half of what is there, when that is more than the step: copying stays in proportion to the entries.
    const uint64_t grownBytes = stamp->capacityBytes + std::max(stepBytes, stamp->capacityBytes / 2);
    if (grownBytes > std::numeric_limits<size_t>::max())
        return false;
    void *grown = stamp->entries ? CountedRealloc(stamp->entries, static_cast<size_t>(stamp->capacityBytes),
                                                  static_cast<size_t>(grownBytes))
                                 : CountedAlloc(static_cast<size_t>(grownBytes));
    if (!grown)
        return false;
    stamp->entries = static_cast<StampEntry *>(grown);
    stamp->capacityBytes = grownBytes;
    return true;
}

bool AppendStampEntry(StarStamp *stamp, int32_t quarterX, int32_t quarterY, const uint32_t factor[3],
                      uint32_t value, uint64_t stepBytes) {
    const int32_t dx = quarterX / kPhases, dy = quarterY / kPhases;
    if (!FitsInt16(dx) || !FitsInt16(dy))
        return true;
    if (!ReserveStampEntry(stamp, stepBytes))
        return false;
    stamp->entries[stamp->count++] = StampEntry{
        static_cast<int16_t>(dx), static_cast<int16_t>(dy), {factor[0], factor[1], factor[2]}, value};
    stamp->minX = std::min(stamp->minX, dx);
    stamp->minY = std::min(stamp->minY, dy);
    stamp->maxX = std::max(stamp->maxX, dx + 1);
    stamp->maxY = std::max(stamp->maxY, dy + 1);
    return true;
}

void EmptyStamp(StarStamp *stamp) {
    stamp->count = 0;
    stamp->minX = stamp->minY = stamp->maxX = stamp->maxY = 0;
}

void FreeStamp(StarStamp *stamp) {
    CountedFree(stamp->entries, static_cast<size_t>(stamp->capacityBytes));
    *stamp = StarStamp{};
}

namespace {

constexpr int64_t kDistanceMemoSize = 429483; // squared distances below this are kept
constexpr uint32_t kProfileMemoSize = 32768;  // distances below this are kept

uint16_t gDistanceMemo[kDistanceMemoSize];

SpikeProfileInputs gInputs;
double gExponent;
uint32_t gProfileMemo[kProfileMemoSize];

// Ten times a square root of an integer is never a whole number and a half, so adding a half and truncating
// is rounding.
uint32_t ComputeDistance(int64_t squared) {
    return static_cast<uint32_t>(10.0 * std::sqrt(static_cast<double>(squared)) + 0.5);
}

bool SameInputs(const SpikeProfileInputs &a, const SpikeProfileInputs &b) {
    return a.length == b.length && a.decay == b.decay && a.brightness == b.brightness && a.scale == b.scale &&
           a.diagonal == b.diagonal;
}

// Flat at full brightness near the centre, then a power of the distance.
uint32_t ComputeSpikeValue(uint32_t distance) {
    const double pixels = distance * 1500.0 / gInputs.diagonal / gInputs.scale;
    const double level = std::pow(pixels + 1.0, gExponent) * 8.0;
    return level < 1.0 ? static_cast<uint32_t>(gInputs.brightness * level) : gInputs.brightness;
}

} // namespace

uint32_t MeasureDistance(int32_t dx, int32_t dy) {
    const int64_t squared = int64_t{dx} * dx + int64_t{dy} * dy;
    if (squared >= kDistanceMemoSize)
        return ComputeDistance(squared);
    uint16_t &known = gDistanceMemo[squared];
    if (known == 0)
        known = static_cast<uint16_t>(ComputeDistance(squared));
    return known;
}

void SelectSpikeProfile(const SpikeProfileInputs &inputs) {
    if (SameInputs(inputs, gInputs))
        return;
    ResetSpikeProfile();
    gInputs = inputs;
    gExponent = -std::pow(inputs.decay / 100.0, 0.28) * 200.0 / (inputs.length + 28);
}

uint32_t SpikeValueAt(uint32_t distance) {
    if (distance >= kProfileMemoSize)
        return ComputeSpikeValue(distance);
    uint32_t &known = gProfileMemo[distance];
    if (known == 0)
        known = ComputeSpikeValue(distance);
    return known;
}

void ResetSpikeProfile() {
    std::fill(std::begin(gProfileMemo), std::end(gProfileMemo), 0u);
    gInputs = SpikeProfileInputs{};
    gExponent = 0.0;
}

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

bool DrawSecondarySpikes(const StampContext &context, StarStamp *stamp, int32_t px, int32_t py) {
    const RenderSettings &settings = context.settings;
    const uint32_t onePercent = SpikeBrightness(settings.secondaryIntensity) / 100;
    ArmShape arm{};
    arm.sharpnessFactor = StarSharpnessFactor(context) * 0.5;
    arm.widthFactor = StarWidthFactor(context);
    arm.length = settings.length * 90 / 100;
    arm.decay = settings.secondaryIntensity;
    for (const BurstRay &ray : kStarBurstTable) {
        arm.angle = settings.angle + ray.angle * 10;
        arm.brightness = static_cast<uint32_t>(ray.weight) * onePercent;
        if (!DrawArm(context, stamp, px, py, arm))
            return false;
    }
    return true;
}

namespace {

bool DrawPrimaryArms(const StampContext &context, StarStamp *stamp, int32_t px, int32_t py) {
    const RenderSettings &settings = context.settings;
    const ArmList list = LayoutStar({settings.effectType, settings.angle, settings.numberOfPoints,
                                     settings.length, SpikeBrightness(settings.intensity)});
    ArmShape arm{};
    arm.sharpnessFactor = StarSharpnessFactor(context);
    arm.widthFactor = StarWidthFactor(context);
    arm.decay = settings.intensity;
    for (int32_t i = 0; i < list.count; ++i) {
        arm.angle = list.arms[i].angle;
        arm.length = list.arms[i].length;
        arm.brightness = list.arms[i].brightness;
        if (!DrawArm(context, stamp, px, py, arm))
            return false;
    }
    return true;
}

} // namespace

bool DrawStar(const StampContext &context, StarStamp *stamp, int32_t px, int32_t py) {
    EmptyStamp(stamp);
    if (context.settings.length <= 0)
        return true;
    if (!DrawPrimaryArms(context, stamp, px, py))
        return false;
    return context.settings.secondaryIntensity <= 0 || DrawSecondarySpikes(context, stamp, px, py);
}

} // namespace plain
