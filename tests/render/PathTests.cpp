// The short cuts of the inner loops. What both forms blend is held against the yardsticks in tests/reference.
#include "render/rows/PixelBlender.h"
#include "render/stamp/StampLayer.h"
#include "tests/render/RenderFixture.h"

namespace {

class PathTest : public RenderTest {
protected:
    // Each path draws what the portable one draws, on black.
    void ExpectAlike(const RenderSettings &settings, int32_t mode, const std::vector<LightSource> &lights) {
        const IntRect bounds = {0, 0, gImageGeometry.width, gImageGeometry.height};
        const TestImage source(mode, 1, 0, bounds);
        TestImage expected(mode, 1, 0, bounds);
        for (const RenderPath *each : {&kPortablePath, Avx2Path(), Avx512Path()}) {
            TestImage output(mode, 1, 0, bounds);
            gRenderPath = each ? each : &kPortablePath;
            ASSERT_TRUE(Render(settings, source, lights, each == &kPortablePath ? &expected : &output));
            EXPECT_TRUE(each == &kPortablePath || output.Bytes() == expected.Bytes()) << gRenderPath->name;
            ResetRenderState();
        }
    }
};

// In a picture of this diagonal every distance ends a phase of the rainbow to the digit, so that each phase
// lies in doubt; at full depth its factors fall to almost nothing.
TEST_F(PathTest, PhasesThatEndAtADistanceAreTheIntegers) {
    RenderSettings settings = kSettings;
    settings.length = settings.intensity = settings.rainbowIntensity = 100;
    settings.effectsOnly = true;
    SetImageGeometry({0, 0, 276, 115});
    ASSERT_EQ(gImageGeometry.diagonal, 300);
    for (const int16_t frequency : {7, 8}) {
        settings.rainbowFrequency = frequency;
        ExpectAlike(settings, kModeRgb8, {MakeSource(140, 60, 1, 2), MakeSource(30, 9)});
    }
}

// Lights that shine on one another all along a picture wider than what is looked at in one go.
TEST_F(PathTest, WhereItIsBrightAlreadyTheIntegersAreTheSame) {
    RenderSettings settings = kSettings;
    settings.length = settings.intensity = settings.softFlareIntensity = 100;
    SetImageGeometry({0, 0, 9000, 48});
    std::vector<LightSource> lights;
    for (int i = 0; i < 90; ++i)
        lights.push_back(MakeSource(i * 100 + i % 7, i * 29 % 48, i % 4, i / 4 % 4));
    for (const int32_t mode : {kModeGray8, kModeRgb8})
        ExpectAlike(settings, mode, lights);
}

} // namespace
