// Means and deviations over disks and rings around a quarter-pixel centre.
#pragma once

#include "tests/reference/detect/ReferenceDetect.h"

#include <array>
#include <cstdint>
#include <optional>

namespace reference {

constexpr int64_t kSamplerRadii = 384;

struct Statistics {
    double mean, deviation;
};

// Nothing when no pixel belongs to the shape. The radius index is in quarter pixels.
std::optional<Statistics> MeasureDisk(const Analysis &analysis, const Centre &centre, int64_t index);
std::optional<Statistics> MeasureRing(const Analysis &analysis, const Centre &centre, int64_t index);
// Mean red, green and blue over a ring, truncated.
std::optional<std::array<uint32_t, 3>> MeasureRingColor(const Analysis &analysis, const Centre &centre,
                                                        int64_t index);
double Contrast(const Statistics &statistics);

} // namespace reference
