// The radial profile of a bright spot: how far it reaches in eight directions, and the centre that follows
// from it.
#pragma once

#include "engine/detect/BandPicture.h"
#include "engine/table/LightSource.h"

#include <cstdint>

struct DirectionStep {
    int32_t dx, dy;
};

// Unit steps, x to the right and y downward. The odd ones are diagonal. Order matters to every user.
constexpr int32_t kDirections = 8;
constexpr DirectionStep kDirectionSteps[kDirections] = {{1, 0},  {1, 1},   {0, 1},  {-1, 1},
                                                        {-1, 0}, {-1, -1}, {0, -1}, {1, -1}};

// One radius a direction, in pixels; negative: no edge was found there.
struct RadialProfile {
    float radii[kDirections];
};

struct ProfileStatistics {
    double mean, deviation; // both -1.0 when there was nothing to measure
};

// Measures the spot around the pixel (x, y), which must lie inside the bounds. False when the spot is a flat
// bright area: it goes on for more than 137 pixels without an edge or a change of colour; all radii are then
// -1.
bool MeasureProfile(const BandPicture &picture, int32_t x, int32_t y, RadialProfile *profile);

// Mean and deviation of the radii that are not negative. With a tolerance, each radius that differs from the
// first mean by more is replaced by that mean in the profile and left out.
ProfileStatistics MeasureProfileStatistics(double tolerance, RadialProfile *profile);

// The centre of a spot whose profile was measured at (x, y), to a quarter pixel; it may lie outside the
// bounds. False when a side has no radius.
bool FindProfileCenter(const RadialProfile &profile, int32_t x, int32_t y, LightSourcePosition *center);
