// x^y for many x and one y, several times sooner than the library's pow, with a known error: for integers
// that are made from a power and must be the same as if they had been made from std::pow.
#pragma once

#include <cstdint>

// A mantissa m in [1, 2) lies in one of 256 cells with centre c; m^y = c^y · (1 + u)^y with u = (m − c) / c,
// at most 1/512, so that seven terms of the binomial series are enough.
constexpr int32_t kPowerCells = 256;
constexpr int32_t kPowerTerms = 7;
constexpr int32_t kFirstOctave = -64; // powers are known for x in [2^-64, 2^48)
constexpr int32_t kOctaves = 112;

struct FixedPower {
    double exponent;
    double error;                   // relative, at most, against std::pow
    double term[kPowerTerms];       // coefficients of u^i
    double cell[kPowerCells];       // c^y
    double reciprocal[kPowerCells]; // 1 / c
    double octave[kOctaves];        // (2^e)^y from e = kFirstOctave
};

// |exponent| at most 32.
void PrepareFixedPower(double exponent, FixedPower *power);
// x in [2^-64, 2^48), where the power is neither too large nor too small for a double.
double PowerOf(const FixedPower &power, double x);

// The power of 1.6 that turns an arm's coverage into its share. Read-only once prepared, by the first
// PrepareCoveragePower; before the first render, one thread.
extern FixedPower gCoveragePower;
void PrepareCoveragePower();

constexpr double kCoverageExponent = 1.6;
// A share this near to the next integer is taken from std::pow instead: the approximation's error, 2^-46 of
// at most 2^32, and the roundings after it stay well below.
constexpr double kShareMargin = 1.0 / 4096.0;

// trunc(coverage^1.6 × 4294967294 + 0.5), with std::pow's integer. Coverage in [2^-54, 1]: an
// arm's is a half and a difference, which leaves nothing smaller above 0.
uint32_t ShareOfCoverage(double coverage);
// A coverage that is needed for the share, which may be more than 1: at most that, and less by 2 % at most
// unless the share is below 2^-32.
double NeededCoverage(double share);
// The same as ShareOfCoverage, straight from std::pow.
uint32_t ShareByLibrary(double coverage);
