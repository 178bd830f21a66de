#include "diag/BufferUsage.h"
#include "engine/DebugImages.h"
#include "engine/image/FixedPoint.h"
#include "render/RenderState.h"
#include "render/StampPicture.h"
#include "render/shape/AngleTables.h"
#include "tests/support/RecordingDiag.h"
#include "tests/viewers/KeptScene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

LightSource &LightNear(int32_t x, int32_t y, int32_t reach = 3) {
    const LightSourceTableView lights = GetLightSourceTable();
    for (uint32_t i = 0; i < lights.count; ++i)
        if (std::abs(lights.records[i].X - x) <= reach && std::abs(lights.records[i].Y - y) <= reach)
            return lights.records[i];
    ADD_FAILURE() << "no light at " << x << ", " << y;
    return lights.records[0];
}

class PictureTest : public ::testing::Test {
protected:
    void SetUp() override { ChooseWhatToKeep(true, true); }
    // Whatever was kept is given back, down to the last byte.
    void TearDown() override {
        ChooseWhatToKeep(false, false);
        EXPECT_EQ(BufferBytesInUse(), 0);
    }
};

int Level(uint32_t color, int channel) {
    return static_cast<int>(color >> channel * 8 & 0xFF);
}

int Brightest(uint32_t color) {
    return std::max({Level(color, 0), Level(color, 1), Level(color, 2)});
}

// Points of the circle's line, in steps of a degree, that have a colour. A smooth line's pixels are partly
// the background's.
int PointsOfColor(const DrawnPicture &drawn, const LightSource &light, uint32_t wanted) {
    const double radius = std::max(std::sqrt(double(light.RadiusSquared)), 1.5);
    int found = 0;
    for (int degree = 0; degree < 360; ++degree) {
        const double angle = degree * 3.14159265 / 180;
        const double x = light.X + light.XQuarter * 0.25 + radius * std::cos(angle);
        const double y = light.Y + light.YQuarter * 0.25 + radius * std::sin(angle);
        const uint32_t color =
            drawn.At(static_cast<int32_t>(std::lround(x)), static_cast<int32_t>(std::lround(y)));
        const double share = Brightest(color) / double(Brightest(wanted));
        bool same = share > 0.4;
        for (int channel = 0; channel < 3; ++channel)
            same = same && std::abs(Level(color, channel) - Level(wanted, channel) * share) < 20;
        found += same;
    }
    return found;
}

uint32_t HueOf(const LightSource &light) {
    const double largest = std::max({light.Red, light.Green, light.Blue});
    return static_cast<uint32_t>(light.Red * 255.0 / largest) << 16 |
           static_cast<uint32_t>(light.Green * 255.0 / largest) << 8 |
           static_cast<uint32_t>(light.Blue * 255.0 / largest);
}

} // namespace

TEST_F(PictureTest, AnalysisImageIsThePictureAndShadingShowsWhatDetectionLeavesOut) {
    ASSERT_TRUE(KeepScene(SceneSettings()));
    const DrawnPicture plain = DrawPicture(kAnalysisPicture), shaded = DrawPicture(kShadedPicture);
    EXPECT_EQ(plain.At(100, 60), 0xFFFAF0u);
    EXPECT_EQ(plain.At(200, 90), 0xFF6EF0u);
    EXPECT_EQ(plain.At(200, 220), 0xF0F0F0u); // as it was before it was marked
    EXPECT_EQ(plain.At(5, 5), 0x0C0C0Cu);
    int stripes[2] = {0, 0};
    for (int32_t y = 0; y < kSceneHeight; ++y)
        for (int32_t x = 0; x < kSceneWidth; ++x) {
            const uint32_t before = plain.At(x, y), after = shaded.At(x, y);
            if (RectContains(kUnselectedArea, x, y)) {
                ASSERT_EQ(after, 0x9E0505u) << x << ' ' << y;
            } else if (RectContains(kTransparentArea, x, y)) {
                ASSERT_EQ(after, 0x05299Eu) << x << ' ' << y;
            } else if (RectContains(kFlatArea, x, y)) {
                ASSERT_TRUE(after == 0x48E279 || after == 0x9CE9B5)
                    << x << ' ' << y << ": " << std::hex << after;
                ++stripes[after == 0x48E279];
            } else {
                ASSERT_EQ(after, before) << x << ' ' << y;
            }
        }
    EXPECT_NEAR(stripes[0], stripes[1], stripes[0] / 10);
}

TEST_F(PictureTest, CirclesTellColourStateAndThreshold) {
    ASSERT_TRUE(KeepScene(SceneSettings()));
    LightSource &warm = LightNear(200, 90), &white = LightNear(100, 60);
    constexpr uint32_t grey = 0x969696;
    DrawnPicture drawn = DrawPicture(kLightsPicture);
    EXPECT_EQ(drawn.At(5, 150), 0x040404u) << "a third of the picture";
    EXPECT_GT(PointsOfColor(drawn, warm, HueOf(warm)), 350);
    EXPECT_LT(Level(HueOf(warm), 1), 160);

    white.State = 0;
    drawn = DrawPicture(kLightsPicture);
    EXPECT_GT(PointsOfColor(drawn, white, HueOf(white)), 100) << "dashes";
    EXPECT_LT(PointsOfColor(drawn, white, HueOf(white)), 260) << "gaps";
    white = {198, 0, 90, 0, 6, white.Brightness, white.Red, white.Green, white.Blue, white.Intensity,
             -1,  1, 1};
    const double share = 3 - std::sqrt(6.0),
                 expected = (1 - share) * 110 / 3 + share * Level(HueOf(white), 1);
    EXPECT_NEAR(Level(DrawPicture(kLightsPicture).At(200, 90), 1), expected, 3) << "the rest shines through";

    RenderSettings strict = SceneSettings();
    strict.threshold = 30; // only the brightest are above the cut
    ASSERT_TRUE(KeepScene(strict));
    LightSource &cut = LightNear(300, 50);
    ASSERT_LE(cut.Brightness, KeptCutLevel());
    EXPECT_GT(PointsOfColor(DrawPicture(kLightsPicture), cut, grey), 350);
    cut.State = 2;
    EXPECT_EQ(PointsOfColor(DrawPicture(kLightsPicture), cut, grey), 0) << "a forced one gets its star";
}

TEST_F(PictureTest, ReducedPictureHasItsCirclesInPlace) {
    ASSERT_TRUE(KeepScene(SceneSettings(), 6));
    const DrawnPicture drawn = DrawPicture(kLightsPicture);
    EXPECT_EQ(std::max(drawn.Width(), drawn.Height()), 1200);
    EXPECT_DOUBLE_EQ(drawn.place.scale, kSceneWidth * 6 / 1200.0);
    for (const SceneSpot &spot : kSceneSpots) {
        LightSource scaled = LightNear(spot.x * 6, spot.y * 6, 15);
        scaled.X = static_cast<int32_t>(std::lround(scaled.X / drawn.place.scale));
        scaled.Y = static_cast<int32_t>(std::lround(scaled.Y / drawn.place.scale));
        scaled.RadiusSquared =
            static_cast<int32_t>(scaled.RadiusSquared / (drawn.place.scale * drawn.place.scale));
        EXPECT_GT(PointsOfColor(drawn, scaled, HueOf(scaled)), 200) << spot.x;
    }
}

// Nothing that is seen of the star is outside the picture, and nothing in it is another than on a large
// image.
TEST_F(PictureTest, StarPictureIsWhatTheRendererLays) {
    for (const int16_t flare : {0, 40}) {
        RenderSettings settings = SceneSettings();
        settings.softFlareIntensity = flare;
        settings.rainbowIntensity = settings.rainbowFrequency = 80; // red and blue differ
        ASSERT_TRUE(KeepScene(settings));
        const DrawnPicture drawn = DrawPicture(kStampPicture);
        ImageBuffer large{};
        bool maskFailed = false;
        const IntRect bounds = {-kSceneWidth, -kSceneWidth, kSceneWidth, kSceneWidth};
        ASSERT_EQ(AllocateImageBuffer(kModeRgb8, 1, 0, bounds, false, &large, &maskFailed), kNoError);
        LightSource light{};
        light.Red = light.Green = light.Blue = light.Brightness = light.Intensity = kFractionOne;
        light.State = 1;
        const std::atomic<uint8_t> abort{0};
        EXPECT_TRUE(RenderEffect(settings, large, bounds, {&light, 1}, abort, &large));
        int lit = 0;
        for (int32_t y = bounds.top; y < bounds.bottom; ++y)
            for (int32_t x = bounds.left; x < bounds.right; ++x) {
                const int64_t i = int64_t{y - bounds.top} * large.width + (x - bounds.left);
                const uint32_t expected = uint32_t{large.planes[0][i]} << 16 |
                                          uint32_t{large.planes[1][i]} << 8 | large.planes[2][i];
                lit += expected != 0;
                if (RectContains(drawn.place.area, x, y))
                    ASSERT_EQ(drawn.At(x, y), expected) << x << ' ' << y;
                else
                    ASSERT_LT(Brightest(expected), 4) << x << ' ' << y;
            }
        for (int64_t n = 1; n < 12; ++n) {
            std::vector<uint8_t> room(drawn.bgra.size());
            FailAllocation(n, true);
            const bool isDrawn = DrawDebugPicture(kStampPicture, drawn.place, room.data());
            EXPECT_EQ(isDrawn, room[3] == 255) << n;
            FailAllocation(0, false);
        }
        EXPECT_GT(lit, 200);
        EXPECT_GT(Level(drawn.At(0, 0), 1), 150);
        FreeImageBuffer(&large);
        FreeRenderState();
    }
}

TEST_F(PictureTest, NoPictureIsKeptUnlessAskedForAndShortMemoryHarmsNoRun) {
    DebugPicturePlace place;
    ChooseWhatToKeep(true, false);
    ASSERT_TRUE(KeepScene(SceneSettings()));
    EXPECT_GE(GetLightSourceTable().count, 3u);
    EXPECT_FALSE(FindDebugPicture(kStampPicture, &place));
    const uint32_t lights = GetLightSourceTable().count;

    // Each allocation of a run fails once: the run fails, or it goes on and the pictures are missing.
    ChooseWhatToKeep(true, true);
    int withoutPicture = 0;
    for (int64_t n = 1; n < 40; ++n) {
        FailAllocation(n, false);
        const bool built = KeepScene(SceneSettings());
        FailAllocation(0, false);
        withoutPicture += built && !FindDebugPicture(kAnalysisPicture, &place);
        EXPECT_TRUE(!built || GetLightSourceTable().count == lights) << n;
        ForgetRun();
        FreeTableRecords(gLightSourceTable);
    }
    EXPECT_EQ(withoutPicture, 2) << "the samples' copy and the flat areas";
    EXPECT_FALSE(FindDebugPicture(kDebugPictures, &place));
    EXPECT_FALSE(FindDebugPicture(-1, &place));
    FreeRenderState();
    TakeReports();
}
