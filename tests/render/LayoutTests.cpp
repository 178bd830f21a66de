// The arms of every effect type, to the integer. The expected lists were worked out by a script of their own.
#include "render/EffectTypes.h"
#include "render/RenderSettings.h"

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

static bool operator==(const ArmCall &a, const ArmCall &b) {
    return a.angle == b.angle && a.length == b.length && a.brightness == b.brightness;
}

static void PrintTo(const ArmCall &arm, std::ostream *out) {
    *out << "{" << arm.angle << ", " << arm.length << ", " << arm.brightness << "u}";
}

namespace {

constexpr uint32_t kFull = 1000000007u;

struct LayoutCase {
    const char *name;
    StarLayout star;
    std::vector<ArmCall> arms;
};

void PrintTo(const LayoutCase &layout, std::ostream *out) {
    *out << layout.name;
}

const LayoutCase kLayouts[] = {
    {"StandardStarTruncatesEvenSpacing",
     {kStandardStar, 150, 7, 50, kFull},
     {{150, 50, kFull},
      {664, 50, kFull},
      {1178, 50, kFull},
      {1692, 50, kFull},
      {2207, 50, kFull},
      {2721, 50, kFull},
      {3235, 50, kFull}}},
    {"StandardStarOfOnePoint", {kStandardStar, -450, 1, 50, kFull}, {{-450, 50, kFull}}},
    {"HollywoodStarFansDifferInTurn",
     {kHollywoodStar, 150, 3, 50, kFull},
     {{108, 40, 800000000u},
      {310, 47, 950000000u},
      {1188, 50, kFull},
      {1304, 45, 900000000u},
      {1385, 50, kFull},
      {1506, 47, 950000000u},
      {2376, 50, kFull},
      {2508, 40, 800000000u},
      {2710, 47, 950000000u},
      {3588, 50, kFull},
      {3704, 45, 900000000u}}},
    {"HollywoodStarTruncatesLengths",
     {kHollywoodStar, 0, 2, 33, kFull},
     {{-56, 26, 800000000u},
      {248, 31, 950000000u},
      {1564, 33, kFull},
      {1738, 29, 900000000u},
      {1860, 33, kFull},
      {2042, 31, 950000000u},
      {3346, 33, kFull}}},
    {"CrossOfOneArm", {kReligiousCross, 150, 1, 57, kFull}, {{150, 57, 900000000u}}},
    {"CrossOfFour",
     {kReligiousCross, 0, 4, 50, kFull},
     {{0, 50, 900000000u}, {900, 50, 900000000u}, {1800, 65, kFull}, {2700, 50, 900000000u}}},
    {"CrossOfFiveDoublesTheHead",
     {kReligiousCross, 0, 5, 50, kFull},
     {{-5, 50, 900000000u},
      {5, 50, 900000000u},
      {900, 50, 900000000u},
      {1800, 65, kFull},
      {2700, 50, 900000000u}}},
    {"CrossOfSixDoublesHeadAndFoot",
     {kReligiousCross, 0, 6, 50, kFull},
     {{-5, 50, 900000000u},
      {5, 50, 900000000u},
      {900, 50, 900000000u},
      {1795, 65, kFull},
      {1805, 65, kFull},
      {2700, 50, 900000000u}}},
    {"CrossOfSevenDoublesSidesAndFoot",
     {kReligiousCross, 0, 7, 50, kFull},
     {{0, 50, 900000000u},
      {895, 50, 900000000u},
      {905, 50, 900000000u},
      {1795, 65, kFull},
      {1805, 65, kFull},
      {2695, 50, 900000000u},
      {2705, 50, 900000000u}}},
    {"HyperStarOfOneIsOnePair",
     {kHyperStar, 150, 1, 50, kFull},
     {{1050, 58, 900000000u}, {2850, 58, 900000000u}}},
    {"HyperStarOfThreeIsTwoPairs",
     {kHyperStar, 0, 3, 50, kFull},
     {{900, 58, 900000000u}, {2700, 58, 900000000u}, {1160, 52, 740000000u}, {2960, 63, 740000000u}}},
    {"HyperStarAdjustsSecondArms",
     {kHyperStar, -150, 14, 97, kFull},
     {{750, 112, 900000000u},
      {2550, 112, 900000000u},
      {664, 105, 770000000u},
      {2464, 89, 770000000u},
      {530, 100, 720000000u},
      {2330, 85, 720000000u},
      {270, 107, 920000000u},
      {2070, 107, 920000000u},
      {890, 102, 720000000u},
      {2690, 86, 720000000u},
      {1150, 106, 860000000u},
      {2950, 106, 860000000u},
      {1263, 105, 860000000u},
      {3063, 89, 860000000u}}},
    {"NorthStarHasCompanionsOnOneSide",
     {kNorthStar, 150, 3, 50, kFull},
     {{150, 50, kFull},
      {654, 40, 800000000u},
      {846, 40, 800000000u},
      {1350, 50, kFull},
      {1854, 40, 800000000u},
      {2046, 40, 800000000u},
      {2550, 50, kFull},
      {3054, 40, 800000000u},
      {3246, 40, 800000000u}}},
    {"VectorStarBunchesArms",
     {kVectorStar, 0, 8, 50, kFull},
     {{97, 50, kFull},
      {403, 50, kFull},
      {900, 50, kFull},
      {1596, 50, kFull},
      {1897, 50, kFull},
      {2203, 50, kFull},
      {2700, 50, kFull},
      {3396, 50, kFull}}},
    {"VectorStarOfFive",
     {kVectorStar, 150, 5, 50, kFull},
     {{247, 50, kFull}, {836, 50, kFull}, {1871, 50, kFull}, {2271, 50, kFull}, {3083, 50, kFull}}},
    {"StarBurstOfOneIsOnePair",
     {kStarBurst, 150, 1, 50, kFull},
     {{3780, 55, 807692298u}, {5580, 49, 807692298u}}},
    {"StarBurstOfThreeIsTwoPairs",
     {kStarBurst, 0, 3, 50, kFull},
     {{3630, 55, 807692298u}, {5430, 49, 807692298u}, {2305, 48, 499999994u}, {4105, 48, 499999994u}}},
    {"StarBurstAdjustsSecondArms",
     {kStarBurst, 0, 14, 77, kFull},
     {{3630, 84, 807692298u},
      {5430, 75, 807692298u},
      {3285, 76, 557692301u},
      {5085, 76, 557692301u},
      {3085, 73, 461538456u},
      {4885, 73, 461538456u},
      {2910, 85, 846153836u},
      {4710, 76, 846153836u},
      {2485, 73, 461538456u},
      {4285, 73, 461538456u},
      {2310, 82, 730769222u},
      {4110, 73, 730769222u},
      {1925, 82, 730769222u},
      {3725, 82, 730769222u}}},
};

class LayoutTest : public testing::TestWithParam<LayoutCase> {};

TEST_P(LayoutTest, MatchesToTheInteger) {
    const ArmList list = LayoutStar(GetParam().star);
    EXPECT_EQ(std::vector<ArmCall>(list.arms, list.arms + list.count), GetParam().arms);
}

INSTANTIATE_TEST_SUITE_P(Effects, LayoutTest, testing::ValuesIn(kLayouts),
                         [](const auto &info) { return std::string(info.param.name); });

constexpr uint32_t kTypes[] = {kStandardStar, kHollywoodStar, kReligiousCross, kHyperStar,
                               kNorthStar,    kVectorStar,    kStarBurst};

// Brightness never exceeds the star's own, even at the largest fraction, and the list holds the largest star.
TEST(Layout, EveryCountOfPointsFitsAndNeverOverflows) {
    for (const uint32_t type : kTypes)
        for (int32_t n = 1; n <= kMaxPoints; ++n) {
            const ArmList list = LayoutStar({type, -900, n, 100, 4294967294u});
            const bool pairs = type == kHyperStar || type == kStarBurst;
            const int32_t perPoint = type == kNorthStar ? 3 : 1;
            if (type == kHollywoodStar)
                EXPECT_EQ(list.count, n / 2 * 7 + n % 2 * 4);
            else
                EXPECT_EQ(list.count, pairs ? (n + 1) / 2 * 2 : n * perPoint) << n;
            for (int32_t i = 0; i < list.count; ++i)
                EXPECT_GE(list.arms[i].brightness, 4294967294u / 52 * 24) << type << " " << n << " " << i;
        }
}

TEST(Layout, NoArmsForPointsOrTypesOutOfRange) {
    for (const int32_t n : {-32768, -1, 0, 33, 32767})
        for (const uint32_t type : kTypes)
            EXPECT_EQ(LayoutStar({type, 0, n, 50, kFull}).count, 0);
    EXPECT_EQ(LayoutStar({kStarBurst + 1, 0, 6, 50, kFull}).count, 0);
}

TEST(Layout, PresetPointsOfEveryType) {
    constexpr int32_t kPresets[] = {6, 4, 4, 14, 4, 8, 14};
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(PresetPoints(kTypes[i]), kPresets[i]);
    EXPECT_EQ(PresetPoints(0), 0);
    EXPECT_EQ(PresetPoints(kStarBurst + 1), 0);
}

} // namespace
