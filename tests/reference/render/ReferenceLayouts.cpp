// The seven layouts: which arms a star has.
#include "tests/reference/render/ReferenceStamps.h"

#include <cmath>
#include <cstdlib>

#include "render/shape/EffectTypes.h"
#include "tests/reference/render/ReferenceBurst.h"

namespace reference {

namespace {

int32_t PartOf(int32_t length, int32_t percent) {
    return length * percent / 100;
}
uint32_t PercentOf(uint32_t brightness, uint32_t percent) {
    return brightness / 100 * percent;
}

struct Layout {
    int32_t angle, count, length;
    uint32_t brightness;
    std::vector<Arm> arms;

    void Add(int32_t armAngle, int32_t armLength, uint32_t armBrightness) {
        arms.push_back({armAngle, armLength, armBrightness});
    }
    int32_t Share(int32_t k) const { return 3600 * k / count; }
};

void LayStandardStar(Layout *star) {
    for (int32_t k = 0; k < star->count; ++k)
        star->Add(star->angle + star->Share(k), star->length, star->brightness);
}

void LayHollywoodStar(Layout *star) {
    const int32_t n = star->count, length = star->length;
    const uint32_t full = star->brightness;
    for (int32_t k = 0; k < n; ++k) {
        const int32_t c = star->Share(k) - 14 + star->angle;
        if (k % 2 == 0) {
            star->Add(c - 84 / n, PartOf(length, 80), PercentOf(full, 80));
            star->Add(c + 524 / n, PartOf(length, 95), PercentOf(full, 95));
            star->Add(c + 3156 / n, length, full);
            star->Add(c + 3504 / n, PartOf(length, 90), PercentOf(full, 90));
        } else {
            star->Add(c + 148 / n, length, full);
            star->Add(c + 512 / n, PartOf(length, 95), PercentOf(full, 95));
            star->Add(c + 3120 / n, length, full);
        }
    }
}

void LayCrossDirection(Layout *star, int32_t first, int32_t arms, int32_t length, uint32_t brightness) {
    for (int32_t i = 0; i < arms; ++i)
        star->Add(first + 10 * i, length, brightness);
}

// The direction at 270 degrees has the count of the one at 90 degrees.
void LayReligiousCross(Layout *star) {
    const int32_t a = star->angle, q = star->count / 4, r = star->count % 4;
    const int32_t g1 = q + (r == 1) + (r == 2), g2 = q + (r == 3), g3 = q + (r == 3) + (r == 2);
    const uint32_t weaker = star->brightness / 10 * 9;
    LayCrossDirection(star, a - 5 * g1 + 5, g1, star->length, weaker);
    LayCrossDirection(star, a + (181 - g2) * 5, g2, star->length, weaker);
    LayCrossDirection(star, a + (361 - g3) * 5, g3, 13 * star->length / 10, star->brightness);
    LayCrossDirection(star, a + (541 - g2) * 5, g2, star->length, weaker);
}

int32_t AdjustLength(int32_t length, int32_t a, int32_t numerator) {
    switch (a % 40) {
    case 0:
        return length * numerator / 90;
    case 20:
        return length * 85 / 100;
    case 30:
        return length * 90 / 100;
    default:
        return length;
    }
}

void LayHyperStar(Layout *star) {
    for (int32_t k = 0; k < (star->count + 1) / 2; ++k) {
        const BurstRow &row = kBurst[42 * k / star->count];
        int32_t a = row.angle * 10 % 3600;
        a += a % 20 == 0 ? 50 : -50;
        const int32_t m = a % 1800;
        const int32_t t = m < 900 ? -2 * m : 2 * m - 1800;
        const int32_t u = t / 3;
        const int32_t centre = u + (a - m) + 900 + star->angle;
        const uint32_t brightness = static_cast<uint32_t>(row.weight + 58) * (star->brightness / 100);
        const int32_t length = (row.weight + 200) * star->length / 200 - std::abs(u) / 80;
        star->Add(centre + 60, length, brightness);
        star->Add(centre + 1860, AdjustLength(length, a, 110), brightness);
    }
}

void LayNorthStar(Layout *star) {
    const int32_t n = star->count, weakLength = PartOf(star->length, 80);
    const uint32_t weak = PercentOf(star->brightness, 80);
    for (int32_t k = 0; k < n; ++k) {
        const int32_t c = star->Share(k) + star->angle;
        star->Add(c, star->length, star->brightness);
        star->Add(c + 1512 / n, weakLength, weak);
        star->Add(c + 2088 / n, weakLength, weak);
    }
}

void LayVectorStar(Layout *star) {
    for (int32_t k = 0; k < star->count; ++k) {
        const int32_t a = star->Share(k), m = a % 1800, base = a - m;
        int32_t bent;
        if (m <= 1200)
            bent = base + static_cast<int32_t>(std::pow(m / 1200.0, 0.393) * m);
        else
            bent = base + 1800 - static_cast<int32_t>(std::pow((1800 - m) / 600.0, 1.393) * (1800 - m));
        star->Add(bent + 97 + star->angle, star->length, star->brightness);
    }
}

void LayStarBurst(Layout *star) {
    for (int32_t k = 0; k < (star->count + 1) / 2; ++k) {
        const BurstRow &row = kBurst[42 * k / star->count];
        int32_t a = (360 - row.angle) * 10 % 3600;
        a += a % 20 == 0 ? 70 : -45;
        const uint32_t brightness = static_cast<uint32_t>(row.weight + 10) * (star->brightness / 52);
        const int32_t length = (row.weight + 100) * star->length / 120;
        star->Add(a + star->angle, length, brightness);
        star->Add(a + 1800 + star->angle, AdjustLength(length, a, 100), brightness);
    }
}

} // namespace

std::vector<Arm> PrimaryArms(const RenderSettings &settings) {
    Layout star{
        settings.angle, settings.numberOfPoints, settings.length, PowerFraction(settings.intensity, 2.8), {}};
    if (settings.length <= 0)
        return {};
    switch (settings.effectType) {
    case kStandardStar:
        LayStandardStar(&star);
        break;
    case kHollywoodStar:
        LayHollywoodStar(&star);
        break;
    case kReligiousCross:
        LayReligiousCross(&star);
        break;
    case kHyperStar:
        LayHyperStar(&star);
        break;
    case kNorthStar:
        LayNorthStar(&star);
        break;
    case kVectorStar:
        LayVectorStar(&star);
        break;
    case kStarBurst:
        LayStarBurst(&star);
        break;
    default:
        break;
    }
    return star.arms;
}

} // namespace reference
