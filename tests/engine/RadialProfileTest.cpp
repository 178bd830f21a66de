#include "engine/RadialProfile.h"

#include "tests/engine/TestWorker.h"

#include <cmath>
#include <cstdlib>

namespace {

using RadialProfileTest = EngineTest;

// A square whose last bright pixel lies `reach` pixels from the centre (200, 200).
TestImage MakeSquare(int32_t reach) {
    return MakeGrayRgb(401, 401, [reach](int x, int y) {
        return static_cast<uint8_t>(std::abs(x - 200) <= reach && std::abs(y - 200) <= reach ? 255 : 0);
    });
}

RadialProfile ProfileOf(const ImageBuffer &picture, int32_t x, int32_t y, bool *isFlat = nullptr) {
    const TestWorker worker(picture);
    RadialProfile profile;
    const bool measured = MeasureProfile(worker.shared.image, x, y, &profile);
    if (isFlat)
        *isFlat = !measured;
    return profile;
}

TEST_F(RadialProfileTest, ASharpEdgeIsFoundByEachWidthOfAverages) {
    for (const int32_t reach : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 20, 64, 131}) {
        const TestImage square = MakeSquare(reach);
        const RadialProfile profile = ProfileOf(square.buffer, 200, 200);
        const double expected = reach + (reach <= 7 ? 0.5 : 0.25);
        for (int32_t d = 0; d < kDirections; d += 2)
            EXPECT_NEAR(profile.radii[d], expected, 1e-5) << reach << " direction " << d;
    }
}

TEST_F(RadialProfileTest, DiagonalsScaleTheOffsetDownAndTheSlopeUp) {
    struct Case {
        int32_t reach;
        double offset, slopeUnits; // the edge lies at slopeUnits from offset
    };
    const Case cases[] = {{0, 0, 0.5}, {3, 2.5, 1.0}, {5, 4, 1.5}, {20, 18, 2.25}};
    for (const Case &c : cases) {
        const TestImage square = MakeSquare(c.reach);
        const RadialProfile profile = ProfileOf(square.buffer, 200, 200);
        for (int32_t d = 1; d < kDirections; d += 2)
            EXPECT_NEAR(profile.radii[d], c.offset * 0.7071067 + c.slopeUnits * std::sqrt(2.0), 1e-5)
                << c.reach;
    }
}

TEST_F(RadialProfileTest, AnEdgeBeyondTheLastStepIsNotFound) {
    const TestImage square = MakeSquare(133); // its edge shows at step 138
    bool isFlat;
    const RadialProfile profile = ProfileOf(square.buffer, 200, 200, &isFlat);
    EXPECT_FALSE(isFlat); // the dark beyond the edge has another colour
    for (const float radius : profile.radii)
        EXPECT_EQ(radius, -1.0f);
    const TestImage beyond = MakeSquare(137);
    ProfileOf(beyond.buffer, 200, 200, &isFlat);
    EXPECT_TRUE(isFlat);
    const TestImage smaller = MakeSquare(132);
    EXPECT_NEAR(ProfileOf(smaller.buffer, 200, 200, &isFlat).radii[0], 132.25, 1e-5);
    EXPECT_FALSE(isFlat);
}

TEST_F(RadialProfileTest, LeavingTheBoundsGivesNoRadiusAndIsNotFlat) {
    const TestImage white = MakeGrayRgb(138, 500, [](int, int) { return 255; });
    bool isFlat;
    RadialProfile profile = ProfileOf(white.buffer, 1, 1, &isFlat); // 136 steps to the right
    EXPECT_TRUE(isFlat);                                            // but enough downward
    const TestImage narrow = MakeGrayRgb(138, 138, [](int, int) { return 255; });
    profile = ProfileOf(narrow.buffer, 1, 1, &isFlat);
    EXPECT_FALSE(isFlat);
    for (const float radius : profile.radii)
        EXPECT_EQ(radius, -1.0f);
    ProfileOf(narrow.buffer, 0, 0, &isFlat); // 137 steps lie inside
    EXPECT_TRUE(isFlat);
}

TEST_F(RadialProfileTest, OneOtherColorKeepsASpotFromBeingFlat) {
    for (const uint8_t blue : {224, 223}) { // 255 - 255/8 is a little above 223
        const TestImage image = MakeRgb(301, 301, [blue](int x, int y, int channel) {
            return static_cast<uint8_t>(channel == 2 && x == 160 && y == 150 ? blue : 255);
        });
        bool isFlat;
        const RadialProfile profile = ProfileOf(image.buffer, 150, 150, &isFlat);
        EXPECT_EQ(isFlat, blue == 224);
        EXPECT_EQ(profile.radii[2], -1.0f);
    }
}

TEST_F(RadialProfileTest, AnEdgeIsADropByMoreThanAThirtyFifth) {
    for (const uint8_t outside : {247, 248}) // 255 - 255/35 lies between
        for (const int32_t reach : {0, 2, 3, 5, 30}) {
            const TestImage square = MakeGrayRgb(401, 401, [=](int x, int y) {
                return std::abs(x - 200) <= reach && std::abs(y - 200) <= reach ? uint8_t{255} : outside;
            });
            bool isFlat;
            const RadialProfile profile = ProfileOf(square.buffer, 200, 200, &isFlat);
            EXPECT_EQ(isFlat, outside == 248);
            const double expected = outside == 248 ? -1 : reach + (reach == 30 ? 0.25 : 0.5);
            EXPECT_NEAR(profile.radii[0], expected, 1e-5) << reach;
        }
}

TEST_F(RadialProfileTest, ADimSlopeIsNoEdge) {
    // One level in 255 a pixel: far below a 35th of the brightest, then steps under the limit.
    const TestImage slope = MakeGrayRgb(401, 401, [](int x, int y) {
        return static_cast<uint8_t>(255 - std::min(std::max(std::abs(x - 200), std::abs(y - 200)), 255));
    });
    bool isFlat;
    const RadialProfile profile = ProfileOf(slope.buffer, 200, 200, &isFlat);
    EXPECT_FALSE(isFlat);
    for (const float radius : profile.radii)
        EXPECT_EQ(radius, -1.0f);
}

RadialProfile Profile(std::initializer_list<float> radii) {
    RadialProfile profile;
    std::fill_n(profile.radii, kDirections, -1.0f);
    std::copy(radii.begin(), radii.end(), profile.radii);
    return profile;
}

TEST(ProfileStatistics, ReplaceRadiiThatStandOut) {
    RadialProfile profile = Profile({2, 2, 2, 2, 2, 2, 2, 10});
    const ProfileStatistics all = MeasureProfileStatistics(0, &profile);
    EXPECT_DOUBLE_EQ(all.mean, 3);
    EXPECT_DOUBLE_EQ(all.deviation, std::sqrt(7.0));
    EXPECT_EQ(profile.radii[7], 10);
    const ProfileStatistics kept = MeasureProfileStatistics(all.deviation * 1.2, &profile);
    EXPECT_DOUBLE_EQ(kept.mean, 2);
    EXPECT_DOUBLE_EQ(kept.deviation, 1); // from the first mean
    EXPECT_EQ(profile.radii[7], 3);
}

TEST(ProfileStatistics, SkipMissingRadiiAndReportWhenNothingIsLeft) {
    RadialProfile profile = Profile({0, 10});
    EXPECT_DOUBLE_EQ(MeasureProfileStatistics(5.0, &profile).deviation,
                     5); // a difference equal to the tolerance stays
    const ProfileStatistics none = MeasureProfileStatistics(4.9, &profile);
    EXPECT_EQ(none.mean, -1);
    EXPECT_EQ(none.deviation, -1);
    EXPECT_EQ(profile.radii[0], 5);
    EXPECT_EQ(profile.radii[1], 5);
    EXPECT_EQ(profile.radii[2], -1);
    RadialProfile empty = Profile({});
    EXPECT_EQ(MeasureProfileStatistics(0, &empty).deviation, -1);
}

TEST(ProfileCenter, MovesByTheWholeDifferenceAndSplitsQuarters) {
    LightSourcePosition c{};
    //                                E     SE  S  SW  W  NW  N
    ASSERT_TRUE(FindProfileCenter(Profile({3.25f, -1, 2, -1, 1, -1, 2.5f}), 10, 20, &c));
    EXPECT_EQ(c.X, 12);
    EXPECT_EQ(c.XQuarter, 1);
    EXPECT_EQ(c.Y, 19);
    EXPECT_EQ(c.YQuarter, 2);
    ASSERT_TRUE(FindProfileCenter(Profile({0, -1, 0, -1, 3.3f, -1, 0.9f}), 2, 0, &c));
    EXPECT_EQ(c.X, -2); // -1.3 + 0.125
    EXPECT_EQ(c.XQuarter, 3);
    EXPECT_EQ(c.Y, -1);
    EXPECT_EQ(c.YQuarter, 0);
}

TEST(ProfileCenter, WeighsDiagonalsAndNeedsEverySide) {
    LightSourcePosition c{7, 7, 7, 7};
    EXPECT_FALSE(FindProfileCenter(Profile({1, -1, 1, -1, 1, -1, -1}), 0, 0, &c)); // nothing upward
    EXPECT_FALSE(FindProfileCenter(Profile({-1, 5, 1, 5, 1, 5, 1}), 0, 0, &c) &&
                 c.X == 7); // SE counts for the right side
    // Only diagonals: right (10 + 20) × w / 2, left 0, down 10 × w / 2, up 20 × w / 2.
    ASSERT_TRUE(FindProfileCenter(Profile({-1, 10, -1, 0, -1, 0, -1, 20}), 0, 0, &c));
    EXPECT_EQ(c.X, 10); // 10.607 + 0.125
    EXPECT_EQ(c.XQuarter, 2);
    EXPECT_EQ(c.Y, -4); // -3.536 + 0.125
    EXPECT_EQ(c.YQuarter, 2);
}

} // namespace
