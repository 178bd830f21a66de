#include "render/shape/SpikeProfile.h"

#include "diag/BufferUsage.h"
#include <algorithm>
#include <bit>
#include <cmath>

namespace {

constexpr double kLittleMore = 1.0 + 1e-9; // than a level is off
// 0 stands for "level 0".
constexpr uint32_t kStepsPerOctave = 4;

// The level that an index of `reach` stands for.
uint32_t LevelOfIndex(uint32_t index) {
    return static_cast<uint32_t>(
        (uint64_t{kStepsPerOctave + index % kStepsPerOctave} << (index / kStepsPerOctave)) / kStepsPerOctave);
}

double SpikeExponent(const SpikeProfileInputs &inputs) {
    return -std::pow(inputs.decay / 100.0, 0.28) * 200.0 / (inputs.length + 28);
}

double SpikeBase(const SpikeProfileInputs &inputs, uint32_t distance) {
    return distance * 1500.0 / inputs.diagonal / inputs.scale + 1.0;
}

bool SameFallOff(const SpikeProfileInputs &a, const SpikeProfileInputs &b) {
    return a.length == b.length && a.decay == b.decay && a.scale == b.scale && a.diagonal == b.diagonal;
}

// Flat at full brightness near the centre, then a power of the distance.
uint32_t SpikeValueOfPower(uint32_t brightness, double power) {
    const double level = power * 8.0;
    return level < 1.0 ? static_cast<uint32_t>(brightness * level) : brightness;
}

// Eight times the power, approximately.
double LevelAt(const ValueTable &table, uint32_t distance) {
    return 8.0 * PowerOf(table.power, SpikeBase(table.inputs, distance));
}

// The value that a level stands for; where the level's error could change the integer, from std::pow.
uint32_t ValueOfLevel(const ValueTable &table, uint32_t distance, double level) {
    const uint32_t brightness = table.inputs.brightness;
    if (level > 1.0 + 1e-6)
        return brightness;
    const double value = brightness * level, margin = 2.0 * table.power.error * value;
    const int64_t whole = static_cast<int64_t>(value);
    const double part = value - static_cast<double>(whole);
    const bool isSure = part > margin && part < 1.0 - margin && value + margin < brightness;
    return isSure ? static_cast<uint32_t>(whole) : ComputeSpikeValue(table.inputs, distance);
}

} // namespace

// Ten times a square root of an integer is never a whole number and a half, so adding a half and truncating
// is rounding.
uint32_t MeasureDistance(int32_t dx, int32_t dy) {
    const int64_t squared = int64_t{dx} * dx + int64_t{dy} * dy;
    return static_cast<uint32_t>(10.0 * std::sqrt(static_cast<double>(squared)) + 0.5);
}

bool SameProfileInputs(const SpikeProfileInputs &a, const SpikeProfileInputs &b) {
    return SameFallOff(a, b) && a.brightness == b.brightness;
}

uint32_t ComputeSpikeValue(const SpikeProfileInputs &inputs, uint32_t distance) {
    return SpikeValueOfPower(inputs.brightness, std::pow(SpikeBase(inputs, distance), SpikeExponent(inputs)));
}

double SpikeValueBound(const ValueTable &table, uint32_t distance) {
    return distance + 1 < table.count
               ? table.inputs.brightness * std::min(LevelAt(table, distance) * kLittleMore, 1.0)
               : 0.0;
}

uint32_t ReachOfLevel(const ValueTable &table, uint32_t level) {
    if (level == 0)
        return table.count;
    const uint32_t octave = static_cast<uint32_t>(std::bit_width(level)) - 1;
    const uint32_t step =
        static_cast<uint32_t>((uint64_t{level} * kStepsPerOctave >> octave) - kStepsPerOctave);
    return table.reach[octave * kStepsPerOctave + step];
}

bool AllocateValueTable(uint32_t count, ValueTable *table) {
    void *values = CountedAlloc((size_t{count} + 1) * sizeof(uint32_t));
    if (!values)
        return false;
    table->values = static_cast<uint32_t *>(values);
    table->count = count + 1;
    table->values[count] = 0;
    return true;
}

uint32_t SpikeValueAt(const ValueTable &table, uint32_t distance) {
    return distance + 1 < table.count ? ValueOfLevel(table, distance, LevelAt(table, distance)) : 0;
}

void FreeValueTable(ValueTable *table) {
    if (table->values)
        CountedFree(table->values, size_t{table->count} * sizeof(uint32_t));
    *table = ValueTable{};
}

void MeasureReach(uint32_t (*valueAt)(const ValueTable &table, uint32_t distance), ValueTable *table) {
    uint32_t end = table->count; // levels rise, and their reach falls
    for (uint32_t i = 0; i < ValueTable::kLevels; ++i) {
        const uint32_t level = LevelOfIndex(i);
        if (end > 0)
            end = CountValues(level, end - 1, [&](uint32_t distance) { return valueAt(*table, distance); });
        table->reach[i] = end;
    }
}

namespace {

GlowCurve CurveOf(const SpikeProfileInputs &inputs) {
    return {1500.0 / inputs.diagonal / inputs.scale, static_cast<float>(SpikeExponent(inputs)),
            static_cast<float>(inputs.brightness * 0x1p-32)};
}

} // namespace

ValueTable DescribeSpike(const SpikeProfileInputs &inputs, uint32_t least, uint32_t furthest) {
    ValueTable table{};
    table.inputs = inputs;
    table.curve = CurveOf(inputs);
    PrepareFixedPower(SpikeExponent(inputs), &table.power);
    table.count = 1 + CountValues(least, furthest, [&](uint32_t distance) {
                      return ValueOfLevel(table, distance, LevelAt(table, distance));
                  });
    MeasureReach(SpikeValueAt, &table);
    return table;
}

void FillSpikeBlock(uint32_t block, SpikeLevels *levels, ValueTable *table) {
    const uint32_t first = block * kBlockDistances, end = table->count - 1;
    if (first >= end)
        return;
    const uint32_t count = std::min(end - first, kBlockDistances);
    if (levels->block != block || !SameFallOff(levels->inputs, table->inputs)) {
        levels->inputs = table->inputs;
        levels->block = block;
        levels->count = 0;
    }
    for (; levels->count < count; ++levels->count)
        levels->level[levels->count] = LevelAt(*table, first + levels->count);
    for (uint32_t i = 0; i < count; ++i)
        table->values[first + i] = ValueOfLevel(*table, first + i, levels->level[i]);
}
