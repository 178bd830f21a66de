#include "render/SpikeProfile.h"

#include <algorithm>
#include <cmath>
#include <iterator>

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
