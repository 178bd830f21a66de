#include "render/shape/SpikeProfile.h"

#include "diag/BufferUsage.h"
#include <algorithm>
#include <bit>
#include <cmath>

namespace {

// 0 stands for "level 0".
constexpr uint32_t kStepsPerOctave = 4;

// The level that an index of `reach` stands for.
uint64_t LevelOfIndex(uint32_t index) {
    return (uint64_t{kStepsPerOctave + index % kStepsPerOctave} << (index / kStepsPerOctave)) /
           kStepsPerOctave;
}

double SpikeExponent(const SpikeProfileInputs &inputs) {
    return -std::pow(inputs.decay / 100.0, 0.28) * 200.0 / (inputs.length + 28);
}

double SpikeBase(const SpikeProfileInputs &inputs, uint32_t distance) {
    return distance * 1500.0 / inputs.diagonal / inputs.scale + 1.0;
}

size_t LevelBytes(uint32_t count) {
    return size_t{count} * sizeof(double);
}

bool SameFallOff(const SpikeProfileInputs &a, const SpikeProfileInputs &b) {
    return a.length == b.length && a.decay == b.decay && a.scale == b.scale && a.diagonal == b.diagonal;
}

// Flat at full brightness near the centre, then a power of the distance.
uint32_t SpikeValueOfPower(uint32_t brightness, double power) {
    const double level = power * 8.0;
    return level < 1.0 ? static_cast<uint32_t>(brightness * level) : brightness;
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

void FreeValueTable(ValueTable *table) {
    if (table->values)
        CountedFree(table->values, size_t{table->count} * sizeof(uint32_t));
    *table = ValueTable{};
}

void MeasureReach(ValueTable *table) {
    const uint32_t *end = table->values + table->count;
    for (uint32_t i = 0; i < ValueTable::kLevels; ++i) {
        const uint64_t level = LevelOfIndex(i);
        const uint32_t *first = std::partition_point<const uint32_t *>(
            table->values, end, [&](uint32_t v) { return v >= level; });
        table->reach[i] = static_cast<uint32_t>(first - table->values);
    }
}

namespace {

// The levels as far as `count` distances. False when memory ran out.
bool ExtendLevels(const SpikeProfileInputs &inputs, uint32_t count, SpikeLevels *levels) {
    if (!SameFallOff(levels->inputs, inputs)) {
        levels->inputs = inputs;
        levels->count = 0;
        PrepareFixedPower(SpikeExponent(inputs), &levels->power);
    }
    if (count > levels->room) {
        void *grown = levels->level
                          ? CountedRealloc(levels->level, LevelBytes(levels->room), LevelBytes(count))
                          : CountedAlloc(LevelBytes(count));
        if (!grown)
            return false;
        levels->level = static_cast<double *>(grown);
        levels->room = count;
    }
    for (; levels->count < count; ++levels->count)
        levels->level[levels->count] = 8.0 * PowerOf(levels->power, SpikeBase(inputs, levels->count));
    return true;
}

// Distances from 0 on that are surely at full brightness.
uint32_t CountFlat(const SpikeLevels &levels, uint32_t count) {
    const double *first = levels.level, *end = first + count;
    return static_cast<uint32_t>(
        std::partition_point(first, end, [](double level) { return level > 1.0 + 1e-6; }) - levels.level);
}

// The values of `count` distances; where the levels' error could change the integer, from std::pow.
void FillValues(const SpikeProfileInputs &inputs, const SpikeLevels &levels, uint32_t count,
                uint32_t *values) {
    const double share = 2.0 * levels.power.error * inputs.brightness;
    const uint32_t flat = CountFlat(levels, count);
    std::fill_n(values, flat, inputs.brightness);
    for (uint32_t distance = flat; distance < count; ++distance) {
        const double level = levels.level[distance], value = inputs.brightness * level;
        const int64_t whole = static_cast<int64_t>(value);
        const double part = value - static_cast<double>(whole), margin = share * level;
        const bool isSure = part > margin && part < 1.0 - margin && value + margin < inputs.brightness;
        values[distance] = isSure ? static_cast<uint32_t>(whole) : ComputeSpikeValue(inputs, distance);
    }
}

} // namespace

bool BuildSpikeTable(const SpikeProfileInputs &inputs, uint32_t least, uint32_t furthest, SpikeLevels *levels,
                     ValueTable *table) {
    const double exponent = SpikeExponent(inputs);
    const uint32_t count = CountValues(least, furthest, [&](uint32_t distance) {
        return SpikeValueOfPower(inputs.brightness, std::pow(SpikeBase(inputs, distance), exponent));
    });
    if (!ExtendLevels(inputs, count, levels) || !AllocateValueTable(count, table))
        return false;
    FillValues(inputs, *levels, count, table->values);
    MeasureReach(table);
    return true;
}

void FreeSpikeLevels(SpikeLevels *levels) {
    if (levels->level)
        CountedFree(levels->level, LevelBytes(levels->room));
    levels->level = nullptr;
    levels->count = levels->room = 0;
}
