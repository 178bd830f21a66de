#include "render/SpikeProfile.h"

#include "diag/BufferUsage.h"
#include "render/FixedPower.h"

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

// Flat at full brightness near the centre, then a power of the distance.
uint32_t SpikeValueOfPower(uint32_t brightness, double power) {
    const double level = power * 8.0;
    return level < 1.0 ? static_cast<uint32_t>(brightness * level) : brightness;
}

// The same from an approximate power; false when the power's error could change the integer.
bool SpikeValueOfApproximation(uint32_t brightness, double power, double error, uint32_t *value) {
    const double exact = brightness * (power * 8.0), margin = 2.0 * error * exact;
    *value = SpikeValueOfPower(brightness, power);
    if (exact - margin > brightness)
        return true;
    const double part = exact - *value;
    return part > margin && part < 1.0 - margin && exact + margin < brightness;
}

} // namespace

// Ten times a square root of an integer is never a whole number and a half, so adding a half and truncating
// is rounding.
uint32_t MeasureDistance(int32_t dx, int32_t dy) {
    const int64_t squared = int64_t{dx} * dx + int64_t{dy} * dy;
    return static_cast<uint32_t>(10.0 * std::sqrt(static_cast<double>(squared)) + 0.5);
}

bool SameProfileInputs(const SpikeProfileInputs &a, const SpikeProfileInputs &b) {
    return a.length == b.length && a.decay == b.decay && a.brightness == b.brightness && a.scale == b.scale &&
           a.diagonal == b.diagonal;
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

bool BuildSpikeTable(const SpikeProfileInputs &inputs, uint32_t least, uint32_t furthest, ValueTable *table) {
    const double exponent = SpikeExponent(inputs);
    const uint32_t count = CountValues(least, furthest, [&](uint32_t distance) {
        return SpikeValueOfPower(inputs.brightness, std::pow(SpikeBase(inputs, distance), exponent));
    });
    if (!AllocateValueTable(count, table))
        return false;
    FixedPower power;
    PrepareFixedPower(exponent, &power);
    for (uint32_t distance = 0; distance < count; ++distance) {
        const double base = SpikeBase(inputs, distance);
        if (!SpikeValueOfApproximation(inputs.brightness, PowerOf(power, base), power.error,
                                       &table->values[distance]))
            table->values[distance] = SpikeValueOfPower(inputs.brightness, std::pow(base, exponent));
    }
    MeasureReach(table);
    return true;
}
