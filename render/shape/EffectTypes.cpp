#include "render/shape/EffectTypes.h"

#include "render/shape/AngleTables.h"

#include <cmath>
#include <cstdlib>

const BurstRay kStarBurstTable[kBurstRays] = {
    {4, 32},   {11, 17},  {18, 42},  {27, 19},  {34, 16},  {41, 31},  {47, 14},  {55, 24},  {64, 22},
    {76, 34},  {86, 16},  {100, 20}, {107, 14}, {116, 38}, {125, 16}, {136, 28}, {145, 20}, {152, 21},
    {163, 28}, {175, 23}, {183, 19}, {189, 26}, {199, 18}, {207, 28}, {215, 21}, {226, 23}, {233, 16},
    {246, 31}, {251, 14}, {260, 17}, {277, 18}, {284, 16}, {291, 25}, {296, 15}, {302, 18}, {311, 15},
    {319, 27}, {322, 14}, {331, 18}, {338, 21}, {347, 31}, {352, 20},
};

namespace {

constexpr int32_t kHalfTurn = kFullTurn / 2, kQuarterTurn = kFullTurn / 4;

void AddArm(ArmList *list, int32_t angle, int32_t length, uint32_t brightness) {
    if (list->count < kMaxArms)
        list->arms[list->count++] = ArmCall{angle, length, brightness};
}

// Multiplies first, so that short lengths keep their fraction; brightness divides first, so that it never
// overflows.
int32_t PercentOfLength(int32_t length, int32_t percent) {
    return length * percent / 100;
}
uint32_t PercentOfBrightness(uint32_t brightness, uint32_t percent) {
    return brightness / 100 * percent;
}

// Direction of the k-th of the star's evenly spaced points.
int32_t PointAngle(const StarLayout &star, int32_t k) {
    return kFullTurn * k / star.numberOfPoints;
}

void LayoutStandardStar(const StarLayout &star, ArmList *list) {
    for (int32_t k = 0; k < star.numberOfPoints; ++k)
        AddArm(list, star.angle + PointAngle(star, k), star.length, star.brightness);
}

// Each point is a fan of close spikes. Even and odd points differ: meant so.
void LayoutHollywoodStar(const StarLayout &star, ArmList *list) {
    const int32_t n = star.numberOfPoints, l = star.length;
    const uint32_t b = star.brightness;
    for (int32_t k = 0; k < n; ++k) {
        const int32_t c = PointAngle(star, k) - 14 + star.angle;
        if (k % 2 == 0) {
            AddArm(list, c - 84 / n, PercentOfLength(l, 80), PercentOfBrightness(b, 80));
            AddArm(list, c + 524 / n, PercentOfLength(l, 95), PercentOfBrightness(b, 95));
            AddArm(list, c + 3156 / n, l, b);
            AddArm(list, c + 3504 / n, PercentOfLength(l, 90), PercentOfBrightness(b, 90));
        } else {
            AddArm(list, c + 148 / n, l, b);
            AddArm(list, c + 512 / n, PercentOfLength(l, 95), PercentOfBrightness(b, 95));
            AddArm(list, c + 3120 / n, l, b);
        }
    }
}

// `count` arms a degree apart, centred on a direction.
void AddCrossDirection(ArmList *list, int32_t direction, int32_t count, int32_t length, uint32_t brightness) {
    const int32_t first = direction - 5 * count + 5;
    for (int32_t k = 0; k < count; ++k)
        AddArm(list, first + 10 * k, length, brightness);
}

// The arms are shared out over four directions. The last takes the second's count, not one of its own: meant
// so.
void LayoutReligiousCross(const StarLayout &star, ArmList *list) {
    const int32_t quarter = star.numberOfPoints / 4, rest = star.numberOfPoints % 4;
    const int32_t head = quarter + (rest == 1) + (rest == 2);
    const int32_t side = quarter + (rest == 3);
    const int32_t foot = quarter + (rest == 3) + (rest == 2);
    const uint32_t dimmed = star.brightness / 10 * 9;
    AddCrossDirection(list, star.angle, head, star.length, dimmed);
    AddCrossDirection(list, star.angle + kQuarterTurn, side, star.length, dimmed);
    AddCrossDirection(list, star.angle + kHalfTurn, foot, 13 * star.length / 10, star.brightness);
    AddCrossDirection(list, star.angle + kHalfTurn + kQuarterTurn, side, star.length, dimmed);
}

// The second arm of a pair is longer or shorter than the first by the direction's residue; `longest` is in
// ninetieths.
int32_t AdjustPairLength(int32_t length, int32_t direction, int32_t longest) {
    switch (direction % 40) {
    case 0:
        return length * longest / 90;
    case 20:
        return length * 85 / 100;
    case 30:
        return length * 90 / 100;
    default:
        return length;
    }
}

// Table row of the k-th pair.
const BurstRay &PairRay(const StarLayout &star, int32_t k) {
    return kStarBurstTable[kBurstRays * k / star.numberOfPoints];
}

// Pairs of opposite arms, drawn together toward the axis of each half turn.
void LayoutHyperStar(const StarLayout &star, ArmList *list) {
    for (int32_t k = 0; k < (star.numberOfPoints + 1) / 2; ++k) {
        const BurstRay &ray = PairRay(star, k);
        int32_t a = ray.angle * 10 % kFullTurn;
        a += a % 20 == 0 ? 50 : -50;
        const int32_t m = a % kHalfTurn;
        const int32_t t = m < kQuarterTurn ? -2 * m : 2 * m - kHalfTurn;
        const int32_t u = t / 3;
        const int32_t centre = u + (a - m) + kQuarterTurn + star.angle;
        const uint32_t b = PercentOfBrightness(star.brightness, static_cast<uint32_t>(ray.weight + 58));
        const int32_t l = (ray.weight + 200) * star.length / 200 - std::abs(u) / 80;
        AddArm(list, centre + 60, l, b);
        AddArm(list, centre + 1860, AdjustPairLength(l, a, 110), b);
    }
}

// Each main arm has two weaker companions on one side.
void LayoutNorthStar(const StarLayout &star, ArmList *list) {
    const int32_t n = star.numberOfPoints;
    const int32_t l = PercentOfLength(star.length, 80);
    const uint32_t b = PercentOfBrightness(star.brightness, 80);
    for (int32_t k = 0; k < n; ++k) {
        const int32_t c = PointAngle(star, k) + star.angle;
        AddArm(list, c, star.length, star.brightness);
        AddArm(list, c + 1512 / n, l, b);
        AddArm(list, c + 2088 / n, l, b);
    }
}

// The arms bunch toward the axis of each half turn instead of being evenly spaced.
void LayoutVectorStar(const StarLayout &star, ArmList *list) {
    for (int32_t k = 0; k < star.numberOfPoints; ++k) {
        const int32_t a = PointAngle(star, k);
        const int32_t m = a % kHalfTurn, rest = kHalfTurn - m;
        int32_t bent = a - m;
        if (m <= 1200)
            bent += static_cast<int32_t>(std::pow(m / 1200.0, 0.393) * m);
        else
            bent += kHalfTurn - static_cast<int32_t>(std::pow(rest / 600.0, 1.393) * rest);
        AddArm(list, bent + 97 + star.angle, star.length, star.brightness);
    }
}

// Pairs of opposite arms in the table's directions, turned the other way round.
void LayoutStarBurst(const StarLayout &star, ArmList *list) {
    for (int32_t k = 0; k < (star.numberOfPoints + 1) / 2; ++k) {
        const BurstRay &ray = PairRay(star, k);
        int32_t a = (360 - ray.angle) * 10 % kFullTurn;
        a += a % 20 == 0 ? 70 : -45;
        const uint32_t b = star.brightness / 52 * static_cast<uint32_t>(ray.weight + 10);
        const int32_t l = (ray.weight + 100) * star.length / 120;
        AddArm(list, a + star.angle, l, b);
        AddArm(list, a + kHalfTurn + star.angle, AdjustPairLength(l, a, 100), b);
    }
}

// By index in the table.
using Layout = void (*)(const StarLayout &star, ArmList *list);
constexpr Layout kLayouts[] = {
    LayoutStandardStar, LayoutHollywoodStar, LayoutReligiousCross, LayoutHyperStar,
    LayoutNorthStar,    LayoutVectorStar,    LayoutStarBurst,
};
static_assert(std::size(kLayouts) == std::size(kEffectTypes), "an effect type has no layout");

} // namespace

ArmList LayoutStar(const StarLayout &star) {
    ArmList list;
    list.count = 0;
    const int32_t type = FindEffectType(star.effectType);
    if (type >= 0 && star.numberOfPoints >= 1 && star.numberOfPoints <= kMaxPoints)
        kLayouts[type](star, &list);
    return list;
}
