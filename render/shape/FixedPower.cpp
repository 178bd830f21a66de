#include "render/shape/FixedPower.h"

#include "engine/image/FixedPoint.h"

#include <algorithm>
#include <bit>
#include <cmath>

FixedPower gCoveragePower;

namespace {

constexpr int32_t kMantissaBits = 52, kCellBits = 8, kExponentBias = 1023;
constexpr uint64_t kMantissaMask = (uint64_t{1} << kMantissaBits) - 1;
constexpr uint64_t kOneBits = uint64_t{kExponentBias} << kMantissaBits;
// Rounding in the tables, in the series and in std::pow itself, with room to spare.
constexpr double kRoundingError = 0x1p-46;
constexpr double kLargestShare = 0x1p-9; // of u

// Shares from 2^-32 to 2 as floats, 32 cells an octave, each with the coverage that its lower end needs.
constexpr int32_t kShareShift = 18, kShareCells = 33 * 32;
constexpr uint32_t kFirstShareBits = (127u - 32) << 23;
constexpr double kCautious = 1.0 - 1e-6; // rounding to float may lift a share into the next cell
double gNeededCoverage[kShareCells];

} // namespace

void PrepareFixedPower(double exponent, FixedPower *power) {
    power->exponent = exponent;
    double coefficient = 1.0;
    for (int32_t i = 0; i < kPowerTerms; ++i) {
        power->term[i] = coefficient;
        coefficient *= (exponent - i) / (i + 1);
    }
    // The first term left out, and as much again for all the later ones, whose sizes fall at least by half.
    power->error = kRoundingError + 2.0 * std::fabs(coefficient) * std::pow(kLargestShare, kPowerTerms);
    for (int32_t i = 0; i < kPowerCells; ++i) {
        const double centre = 1.0 + (i + 0.5) / kPowerCells;
        power->cell[i] = std::pow(centre, exponent);
        power->reciprocal[i] = 1.0 / centre;
    }
    for (int32_t i = 0; i < kOctaves; ++i)
        power->octave[i] = std::pow(std::ldexp(1.0, kFirstOctave + i), exponent);
}

double PowerOf(const FixedPower &power, double x) {
    const uint64_t bits = std::bit_cast<uint64_t>(x);
    const uint64_t mantissa = bits & kMantissaMask;
    const int32_t octave = static_cast<int32_t>(bits >> kMantissaBits) - kExponentBias;
    const size_t cell = mantissa >> (kMantissaBits - kCellBits);
    const double centre = 1.0 + (static_cast<double>(cell) + 0.5) / kPowerCells;
    const double u = (std::bit_cast<double>(mantissa | kOneBits) - centre) * power.reciprocal[cell];
    double series = power.term[kPowerTerms - 1];
    for (int32_t i = kPowerTerms - 2; i >= 0; --i)
        series = series * u + power.term[i];
    return power.octave[octave - kFirstOctave] * (power.cell[cell] * series);
}

void PrepareCoveragePower() {
    if (gCoveragePower.exponent != 0.0)
        return;
    for (int32_t i = 0; i < kShareCells; ++i) {
        const uint32_t bits = kFirstShareBits + (static_cast<uint32_t>(i) << kShareShift);
        gNeededCoverage[i] = std::pow(std::bit_cast<float>(bits), 1.0 / kCoverageExponent) * kCautious;
    }
    PrepareFixedPower(kCoverageExponent, &gCoveragePower);
}

uint32_t ShareOfCoverage(double coverage) {
    const double share = PowerOf(gCoveragePower, coverage) * kFractionOne + 0.5;
    const uint32_t whole = static_cast<uint32_t>(share);
    const double part = share - whole;
    return part > kShareMargin && part < 1.0 - kShareMargin ? whole : ShareByLibrary(coverage);
}

double NeededCoverage(double share) {
    const uint32_t bits = std::bit_cast<uint32_t>(static_cast<float>(share));
    if (bits < kFirstShareBits)
        return 0.0;
    return gNeededCoverage[std::min<uint32_t>((bits - kFirstShareBits) >> kShareShift, kShareCells - 1)];
}

uint32_t ShareByLibrary(double coverage) {
    return static_cast<uint32_t>(std::pow(coverage, kCoverageExponent) * kFractionOne + 0.5);
}
