// Radial profiles of a candidate: edges in eight directions, their statistics and the centre they give.
#pragma once

#include "tests/reference/detect/ReferenceDetect.h"

#include <optional>

namespace reference {

constexpr int32_t kDirections[8][2] = {{1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {-1, -1}, {0, -1}, {1, -1}};

// Walks outward from (x, y). A flat bright area is marked in the analysis image and gives eight times -1.
Profile MeasureProfile(Analysis *analysis, int64_t x, int64_t y);

// Mean and deviation of the radii; both -1 when there are none. With a tolerance, radii further than it from
// the mean are replaced by the mean.
struct RadiusStatistics {
    double mean, deviation;
};
RadiusStatistics MeasureRadii(Profile *profile, double tolerance);

// The centre that a profile around (x, y) gives; nothing when a side has no radius.
std::optional<Centre> FindCentre(const Profile &profile, int64_t x, int64_t y);

// Marks the flat area around (x, y).
void FloodFill(Analysis *analysis, int64_t x, int64_t y);

} // namespace reference
