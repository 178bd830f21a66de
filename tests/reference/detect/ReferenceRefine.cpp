#include "tests/reference/detect/ReferenceRefine.h"

#include "tests/reference/ReferenceMath.h"
#include "tests/reference/detect/ReferenceProfile.h"
#include "tests/reference/detect/ReferenceSamplers.h"

#include <algorithm>
#include <cmath>

namespace reference {

namespace {

constexpr double kBiggestRadius = 64.0;
constexpr double kRadiusStep = 0.125;
constexpr uint32_t kOne = 0xFFFFFFFEu;

int64_t RoundedIndex(double radius) {
    return std::max<int64_t>(0, static_cast<int64_t>(radius * 4 + 0.5));
}

using Sampler = std::optional<Statistics> (*)(const Analysis &, const Centre &, int64_t);

// A contrast that keeps its value while its index stays, or when it cannot be measured.
struct HeldContrast {
    Sampler sampler;
    int64_t index = -1;
    double value = 0;

    void Update(const Analysis &analysis, const Centre &centre, int64_t newIndex) {
        if (newIndex == index)
            return;
        index = newIndex;
        if (const auto measured = sampler(analysis, centre, newIndex))
            value = Contrast(*measured);
    }
};

bool StepSize(const Analysis &analysis, const Centre &centre, double *radius) {
    const double before = *radius;
    HeldContrast disk{MeasureDisk}, ring{MeasureRing}, outerRing{MeasureRing};
    bool grew = false;
    for (int iteration = 0; iteration < 6; ++iteration) {
        const int64_t k = RoundedIndex(*radius);
        if (2 * k + 1 >= kSamplerRadii)
            break;
        disk.Update(analysis, centre, k / 2 + 1);
        ring.Update(analysis, centre, k);
        outerRing.Update(analysis, centre, 2 * k + 1);
        const double p = disk.value, q = ring.value, s = outerRing.value;
        if (!(p > s))
            break;
        if (q > p - (p - s) / 4) {
            if (!(*radius < kBiggestRadius))
                break;
            *radius += kRadiusStep;
            grew = true;
        } else {
            if (*radius < 0.25)
                break;
            *radius -= kRadiusStep;
            if (grew)
                break;
        }
    }
    return *radius != before;
}

void CarryQuarters(int64_t *whole, int64_t *quarter) {
    if (*quarter > 3) {
        *quarter -= 4;
        ++*whole;
    } else if (*quarter < 0) {
        *quarter += 4;
        --*whole;
    }
}

Centre Neighbour(const Centre &centre, int direction, bool wholePixels) {
    Centre moved = centre;
    if (wholePixels) {
        moved.x += kDirections[direction][0];
        moved.y += kDirections[direction][1];
    } else {
        moved.xQuarter += kDirections[direction][0];
        moved.yQuarter += kDirections[direction][1];
        CarryQuarters(&moved.x, &moved.xQuarter);
        CarryQuarters(&moved.y, &moved.yQuarter);
    }
    return moved;
}

bool StepPosition(const Analysis &analysis, Centre *centre, double radius) {
    const auto k = static_cast<int64_t>(radius * 4);
    const auto contrastAt = [&](const Centre &place) -> std::optional<double> {
        const auto measured = k < kSamplerRadii ? MeasureRing(analysis, place, k) : std::nullopt;
        return measured ? std::optional(Contrast(*measured)) : std::nullopt;
    };
    double best = contrastAt(*centre).value_or(0.0);
    bool moved = false;
    for (int pass = 0; pass < 4; ++pass) {
        std::optional<Centre> choice;
        for (int direction = 0; direction < 8; ++direction) {
            const Centre place = Neighbour(*centre, direction, radius >= 0);
            const auto contrast = contrastAt(place);
            if (contrast && *contrast > best + 0.000001) {
                best = *contrast;
                choice = place;
            }
        }
        if (!choice)
            break;
        *centre = *choice;
        moved = true;
    }
    return moved;
}

int32_t TruncateToSigned(double mean) {
    return static_cast<int32_t>(static_cast<int64_t>(mean));
}

uint32_t High(uint32_t a, uint32_t b) {
    return Product(Precision::kPrecise, a, b);
}

uint32_t LightLevel(const Analysis &analysis, const Centre &centre, double radius) {
    const int64_t k = RoundedIndex(radius);
    uint32_t level = 0xFFFFFF;
    if (k < kSamplerRadii)
        if (const auto disk = MeasureDisk(analysis, centre, k))
            level = static_cast<uint32_t>(static_cast<uint64_t>(Contrast(*disk)) << 8);
    const uint32_t squared = High(level, level);
    const double f = std::sqrt(radius / 64.0);
    if (f >= 1.0)
        return High(squared, squared);
    const auto share = static_cast<uint32_t>(static_cast<uint64_t>(f * 4294967296.0 + 0.5));
    return High(High(share, squared), High(share, squared));
}

} // namespace

Centre NearestPixel(const Centre &centre) {
    return {centre.x + (centre.xQuarter >= 2), 0, centre.y + (centre.yQuarter >= 2), 0};
}

bool PassesRingContrast(const Analysis &analysis, const Centre &centre, double radius) {
    if (!IsInside(analysis, centre.x, centre.y))
        return false;
    const int64_t k = RoundedIndex(radius);
    const int64_t d = k < 24 ? k / 5 + 2 : k / 9 + 4;
    if (k < d)
        return true;
    std::optional<Statistics> rings[3];
    const int64_t indices[3] = {k - d, k + d + 3, k + d + 11};
    for (int i = 0; i < 3; ++i) {
        if (indices[i] < kSamplerRadii)
            rings[i] = MeasureRing(analysis, centre, indices[i]);
        if (!rings[i])
            return false;
    }
    const int64_t inner = TruncateToSigned(rings[0]->mean);
    const int64_t outer = std::min(TruncateToSigned(rings[1]->mean), TruncateToSigned(rings[2]->mean));
    const int64_t brightest = analysis.maxBrightness;
    if ((brightest - inner) * 11 < (brightest - outer) * 10)
        return true;
    return k < 10 && (inner - outer) * (10 - k) > brightest;
}

bool Refine(const Analysis &analysis, Centre *centre, double *radius) {
    if (*radius >= 0)
        *centre = NearestPixel(*centre);
    const auto limit = static_cast<int64_t>(*radius + 8);
    int64_t rounds = 0;
    bool changed = true;
    while (changed && rounds < limit) {
        const bool resized = StepSize(analysis, *centre, radius);
        const bool moved = StepPosition(analysis, centre, *radius);
        changed = resized || moved;
        ++rounds;
    }
    const bool reachedLimit = rounds == limit;
    return !(reachedLimit && *radius > 8.0);
}

LightColor MeasureLight(const Analysis &analysis, const Centre &centre, double radius) {
    const int64_t k = RoundedIndex(radius);
    std::array<uint32_t, 3> color{0xFFFFFF, 0xFFFFFF, 0xFFFFFF};
    if (k < kSamplerRadii)
        color = MeasureRingColor(analysis, centre, k).value_or(color);
    const uint32_t largest = std::max({color[0], color[1], color[2]});
    const uint32_t level = LightLevel(analysis, centre, radius);
    const auto weigh = [&](uint32_t channel) {
        if (largest == 0)
            return High(kOne, level);
        const uint64_t weight = (static_cast<uint64_t>(channel) << 32) / largest;
        return High(static_cast<uint32_t>(std::min<uint64_t>(weight, kOne)), level);
    };
    return {weigh(color[0]), weigh(color[1]), weigh(color[2])};
}

} // namespace reference
