// The yardstick's arithmetic: a second, slow form of the fixed-point product, the angle tables, the distances
// and the sample conversions. Nothing here is remembered between calls except the two tables.
#pragma once

#include "engine/image/ImageBuffer.h"

#include <array>
#include <cstdint>

namespace reference {

enum class Precision { kPrecise, kFast };

// Product of two fractions. In the fast form `nearOne` loses 18 bits and `small` 14.
uint32_t Product(Precision precision, uint32_t nearOne, uint32_t small);

struct AngleTables {
    std::array<float, 3600> sine;
    std::array<uint32_t, 3600> rainbow;
};
const AngleTables &Angles();

// An angle of any sign, in tenths of a degree, brought into 0..3599.
int32_t ReduceAngle(int64_t angle);

// Diagonal of an area, in pixels.
int32_t Diagonal(int32_t width, int32_t height);

// Distance in tenths of a quarter pixel; the differences are in quarter pixels.
int64_t Distance(int64_t dx, int64_t dy);

// Fraction of 1.0 for a percentage raised to a power: (percent / 100)^exponent.
uint32_t PowerFraction(int32_t percent, double exponent);

// One sample of a plane as a working value, and back. `bytes` is 1, 2 or 4.
uint32_t ReadWorking(int32_t bytes, const uint8_t *sample);
void WriteWorking(int32_t bytes, uint32_t working, uint8_t *sample);
// A float sample at or above full intensity, which no blend may change.
bool IsHighlight(int32_t bytes, const uint8_t *sample);

// Reads the three channels of the pixel at `index` of its planes; grey gives the same value three times.
std::array<uint32_t, 3> ReadColor(const ImageBuffer &image, int64_t index);
void WriteColor(const ImageBuffer &image, int64_t index, const std::array<uint32_t, 3> &color);

} // namespace reference
