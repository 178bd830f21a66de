#include "diag/BufferUsage.h"
#include "engine/DebugImages.h"
#include "engine/FixedPoint.h"
#include "render/AngleTables.h"
#include "render/KeptRun.h"
#include "render/StampPicture.h"
#include "tests/support/RecordingDiag.h"
#include "tests/viewers/KeptScene.h"
#include "ui/DebugImageView.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

struct Color {
    int red, green, blue;
    bool operator==(const Color &) const = default;
};

void PrintTo(const Color &c, std::ostream *stream) {
    *stream << c.red << ',' << c.green << ',' << c.blue;
}

struct Drawn {
    DebugPicturePlace place{};
    std::vector<uint8_t> bgra;

    int32_t Width() const { return place.area.right - place.area.left; }
    int32_t Height() const { return place.area.bottom - place.area.top; }
    Color At(int32_t x, int32_t y) const { // in the picture's own coordinates
        const size_t i = (size_t(y - place.area.top) * size_t(Width()) + size_t(x - place.area.left)) * 4;
        EXPECT_EQ(bgra[i + 3], 255);
        return {bgra[i + 2], bgra[i + 1], bgra[i]};
    }
};

Drawn Draw(int32_t choice) {
    Drawn drawn;
    EXPECT_TRUE(FindDebugPicture(choice, &drawn.place));
    drawn.bgra.resize(size_t(drawn.Width()) * size_t(drawn.Height()) * 4);
    EXPECT_TRUE(DrawDebugPicture(choice, drawn.place, drawn.bgra.data()));
    return drawn;
}

LightSource &LightNear(int32_t x, int32_t y) {
    const LightSourceTableView lights = GetLightSourceTable();
    for (uint32_t i = 0; i < lights.count; ++i)
        if (std::abs(lights.records[i].X - x) <= 3 && std::abs(lights.records[i].Y - y) <= 3)
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

// Points of the circle's line, in steps of a degree, that have a colour.
int PointsOfColor(const Drawn &drawn, const LightSource &light, const Color &wanted) {
    const double radius = std::max(std::sqrt(double(light.RadiusSquared)), 1.5);
    int found = 0;
    for (int degree = 0; degree < 360; ++degree) {
        const double angle = degree * 3.14159265 / 180;
        const auto x =
            static_cast<int32_t>(std::lround(light.X + light.XQuarter * 0.25 + radius * std::cos(angle)));
        const auto y =
            static_cast<int32_t>(std::lround(light.Y + light.YQuarter * 0.25 + radius * std::sin(angle)));
        const Color color = drawn.At(x, y);
        const double share = std::max({color.red, color.green, color.blue}) /
                             double(std::max({wanted.red, wanted.green, wanted.blue}));
        // A smooth line's pixels are partly the background's.
        found += share > 0.4 && std::abs(color.red - wanted.red * share) < 20 &&
                 std::abs(color.green - wanted.green * share) < 20 &&
                 std::abs(color.blue - wanted.blue * share) < 20;
    }
    return found;
}

Color HueOf(const LightSource &light) {
    const double largest = std::max({light.Red, light.Green, light.Blue});
    return {static_cast<int>(light.Red * 255.0 / largest), static_cast<int>(light.Green * 255.0 / largest),
            static_cast<int>(light.Blue * 255.0 / largest)};
}

} // namespace

TEST_F(PictureTest, AnalysisImageIsThePictureAndShadingShowsWhatDetectionLeavesOut) {
    ASSERT_TRUE(KeepScene(SceneSettings()));
    const Drawn plain = Draw(kAnalysisPicture), shaded = Draw(kShadedPicture);
    EXPECT_EQ(plain.Width(), kSceneWidth);
    EXPECT_EQ(plain.Height(), kSceneHeight);
    EXPECT_EQ(plain.At(100, 60), (Color{255, 250, 240}));
    EXPECT_EQ(plain.At(200, 90), (Color{255, 240, 110}));
    EXPECT_EQ(plain.At(200, 220), (Color{240, 240, 240})); // as it was before it was marked
    EXPECT_EQ(plain.At(5, 5), (Color{12, 12, 12}));
    int stripes[2] = {0, 0};
    for (int32_t y = 0; y < kSceneHeight; ++y)
        for (int32_t x = 0; x < kSceneWidth; ++x) {
            const Color before = plain.At(x, y), after = shaded.At(x, y);
            if (RectContains(kUnselectedArea, x, y)) {
                ASSERT_EQ(after, (Color{158, 5, 5})) << x << ' ' << y;
            } else if (RectContains(kTransparentArea, x, y)) {
                ASSERT_EQ(after, (Color{5, 41, 158})) << x << ' ' << y;
            } else if (RectContains(kFlatArea, x, y)) {
                ASSERT_TRUE(after == (Color{72, 226, 121}) || after == (Color{156, 233, 181}))
                    << x << ' ' << y << ": " << ::testing::PrintToString(after);
                ++stripes[after.red == 72];
            } else {
                ASSERT_EQ(after, before) << x << ' ' << y;
            }
        }
    EXPECT_NEAR(stripes[0], stripes[1], stripes[0] / 10);
}

TEST_F(PictureTest, CirclesTellColourStateAndThreshold) {
    ASSERT_TRUE(KeepScene(SceneSettings()));
    LightSource &warm = LightNear(200, 90), &white = LightNear(100, 60);
    const Color grey = {150, 150, 150};
    Drawn drawn = Draw(kLightsPicture);
    EXPECT_EQ(drawn.At(5, 150), (Color{4, 4, 4})) << "a third of the picture";
    EXPECT_GT(PointsOfColor(drawn, warm, HueOf(warm)), 350);
    EXPECT_LT(HueOf(warm).blue, 160);

    white.State = 0;
    drawn = Draw(kLightsPicture);
    EXPECT_GT(PointsOfColor(drawn, white, HueOf(white)), 100) << "dashes";
    EXPECT_LT(PointsOfColor(drawn, white, HueOf(white)), 260) << "gaps";

    RenderSettings strict = SceneSettings();
    strict.threshold = 30; // only the brightest are above the cut
    ASSERT_TRUE(KeepScene(strict));
    LightSource &cut = LightNear(300, 50);
    ASSERT_LE(cut.Brightness, KeptCutLevel());
    EXPECT_GT(PointsOfColor(Draw(kLightsPicture), cut, grey), 350);
    cut.State = 2;
    EXPECT_EQ(PointsOfColor(Draw(kLightsPicture), cut, grey), 0) << "a forced one gets its star";
}

TEST_F(PictureTest, ReducedPictureHasItsCirclesInPlace) {
    ASSERT_TRUE(KeepScene(SceneSettings(), 6));
    const Drawn drawn = Draw(kLightsPicture);
    EXPECT_EQ(std::max(drawn.Width(), drawn.Height()), 1200);
    EXPECT_DOUBLE_EQ(drawn.place.scale, kSceneWidth * 6 / 1200.0);
    const LightSourceTableView lights = GetLightSourceTable();
    ASSERT_GE(lights.count, 3u);
    for (const SceneSpot &spot : kSceneSpots) {
        LightSource scaled{};
        for (uint32_t i = 0; i < lights.count; ++i)
            if (std::abs(lights.records[i].X - spot.x * 6) < 15 &&
                std::abs(lights.records[i].Y - spot.y * 6) < 15)
                scaled = lights.records[i];
        ASSERT_NE(scaled.State, 0u) << spot.x;
        scaled.X = static_cast<int32_t>(std::lround(scaled.X / drawn.place.scale));
        scaled.Y = static_cast<int32_t>(std::lround(scaled.Y / drawn.place.scale));
        scaled.RadiusSquared =
            static_cast<int32_t>(scaled.RadiusSquared / (drawn.place.scale * drawn.place.scale));
        EXPECT_GT(PointsOfColor(drawn, scaled, HueOf(scaled)), 200) << spot.x;
    }
}

// Nothing that is seen of the star is outside the picture, and nothing in it is another than on a large image.
TEST_F(PictureTest, StarPictureIsWhatTheRendererLays) {
    for (const int16_t flare : {0, 40}) {
        RenderSettings settings = SceneSettings();
        settings.softFlareIntensity = flare;
        ASSERT_TRUE(KeepScene(settings));
        const Drawn drawn = Draw(kStampPicture);
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
                const Color expected = {large.planes[0][i], large.planes[1][i], large.planes[2][i]};
                lit += expected != Color{0, 0, 0};
                if (RectContains(drawn.place.area, x, y))
                    ASSERT_EQ(drawn.At(x, y), expected) << x << ' ' << y;
                else
                    ASSERT_LT(std::max({expected.red, expected.green, expected.blue}), 4) << x << ' ' << y;
            }
        EXPECT_GT(lit, 200);
        EXPECT_GT(drawn.At(0, 0).green, 150);
        FreeImageBuffer(&large);
        FreeRenderState();
    }
}

TEST_F(PictureTest, NothingIsKeptUnlessAskedForAndShortMemoryHarmsNoRun) {
    DebugPicturePlace place;
    ChooseWhatToKeep(false, false);
    ASSERT_TRUE(KeepScene(SceneSettings()));
    EXPECT_FALSE(IsRunKept());
    EXPECT_FALSE(FindDebugPicture(kAnalysisPicture, &place));
    FreeTableRecords(gLightSourceTable);

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

TEST(DebugViewTest, PointsStayPutWhenZoomedAndNoEmptyStripOpens) {
    DebugView view{kZoomToFit, 1200, 800, 600, 300, 0, 0};
    CentreDebugView(&view);
    EXPECT_DOUBLE_EQ(DebugScale(view), 0.375);
    int x = 0, y = 0, againX = 0, againY = 0;
    ASSERT_TRUE(FindDebugPixel(view, 300, 150, &x, &y));
    EXPECT_NEAR(x, 600, 3);
    EXPECT_NEAR(y, 400, 3);
    EXPECT_FALSE(FindDebugPixel(view, 10, 150, &x, &y)) << "beside the picture";
    ZoomDebugView(&view, kZoomFourfold, 300, 150);
    ASSERT_TRUE(FindDebugPixel(view, 200, 100, &x, &y));
    ZoomDebugView(&view, kZoomActual, 200, 100);
    ASSERT_TRUE(FindDebugPixel(view, 200, 100, &againX, &againY));
    EXPECT_NEAR(againX, x, 1);
    EXPECT_NEAR(againY, y, 1);
    PanDebugView(&view, 100000, -100000);
    EXPECT_EQ(view.originX, 0);
    EXPECT_EQ(view.originY, 300 - 800);
    for (const DebugZoom zoom : {kZoomToFit, kZoomActual, kZoomFourfold}) {
        ZoomDebugView(&view, zoom, 17, 33);
        const DebugSpan columns = VisibleColumns(view), rows = VisibleRows(view);
        EXPECT_LE(columns.place, zoom == kZoomToFit ? 75 : 0);
        EXPECT_GE(columns.place + columns.drawn, zoom == kZoomToFit ? 525 : 600);
        EXPECT_LE(rows.place, 0);
        EXPECT_GE(rows.place + rows.drawn, 300);
        EXPECT_LE(columns.first + columns.count, 1200);
        EXPECT_LE(rows.first + rows.count, 800);
    }
    ResizeDebugView(&view, 8000, 8000);
    EXPECT_EQ(view.originX, (8000 - 4800) / 2) << "smaller than the window: in its middle";
    DebugView nothing{kZoomToFit, 0, 0, 0, 0, 0, 0};
    CentreDebugView(&nothing);
    PanDebugView(&nothing, 5, 5);
    EXPECT_FALSE(FindDebugPixel(nothing, 0, 0, &x, &y));
    EXPECT_EQ(VisibleColumns(nothing).count, 0);
}
