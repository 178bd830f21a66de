#include "tests/reference/detect/ReferenceSamplers.h"

#include <algorithm>
#include <cmath>

namespace reference {

namespace {

// Calls `visit` for every pixel inside the bounds whose distance from the centre is in [inner, outer) quarter
// pixels, row by row.
template <class Visit>
void ForEachPixel(const Analysis &analysis, const Centre &centre, int64_t inner, int64_t outer, Visit visit) {
    const int64_t reach = outer / 4 + 2;
    for (int64_t dy = -reach; dy <= reach; ++dy)
        for (int64_t dx = -reach; dx <= reach; ++dx) {
            const int64_t across = 4 * dx - centre.xQuarter, down = 4 * dy - centre.yQuarter;
            const int64_t squared = across * across + down * down;
            const bool beyondInner = inner <= 0 || squared >= inner * inner;
            if (beyondInner && squared < outer * outer && IsInside(analysis, centre.x + dx, centre.y + dy))
                visit(Fetch(analysis, centre.x + dx, centre.y + dy));
        }
}

std::optional<Statistics> Measure(const Analysis &analysis, const Centre &centre, int64_t inner,
                                  int64_t outer) {
    double count = 0, sum = 0, squares = 0;
    ForEachPixel(analysis, centre, inner, outer, [&](const PixelSample &sample) {
        const auto brightness = static_cast<double>(Brightness(sample));
        count += 1;
        sum += brightness;
        squares += brightness * brightness;
    });
    if (count == 0)
        return std::nullopt;
    const double mean = sum / count;
    return Statistics{mean, std::sqrt(std::max(0.0, squares / count - mean * mean))};
}

} // namespace

std::optional<Statistics> MeasureDisk(const Analysis &analysis, const Centre &centre, int64_t index) {
    return Measure(analysis, centre, 0, index + 2);
}

std::optional<Statistics> MeasureRing(const Analysis &analysis, const Centre &centre, int64_t index) {
    return Measure(analysis, centre, index - 2, index + 2);
}

std::optional<std::array<uint32_t, 3>> MeasureRingColor(const Analysis &analysis, const Centre &centre,
                                                        int64_t index) {
    double count = 0, red = 0, green = 0, blue = 0;
    ForEachPixel(analysis, centre, index - 2, index + 2, [&](const PixelSample &sample) {
        count += 1;
        red += sample.red;
        green += sample.green;
        blue += sample.blue;
    });
    if (count == 0)
        return std::nullopt;
    return std::array<uint32_t, 3>{static_cast<uint32_t>(red / count), static_cast<uint32_t>(green / count),
                                   static_cast<uint32_t>(blue / count)};
}

double Contrast(const Statistics &statistics) {
    const double twice = 2 * statistics.deviation;
    return twice > statistics.mean ? 0.0 : statistics.mean - twice;
}

} // namespace reference
