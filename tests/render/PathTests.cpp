// The short cuts of the inner loops. What both forms blend is held against the yardsticks in tests/reference.
#include "render/rows/PixelBlender.h"
#include "render/stamp/StampLayer.h"
#include "tests/render/RenderFixture.h"

namespace {

// In a picture of this diagonal every distance ends a phase of the rainbow to the digit, so that each phase
// lies in doubt; at full depth its factors fall to almost nothing.
TEST_F(RenderTest, PhasesThatEndAtADistanceAreTheIntegers) {
    RenderSettings settings = kSettings;
    settings.length = settings.intensity = settings.rainbowIntensity = 100;
    settings.effectsOnly = true;
    SetImageGeometry({0, 0, 276, 115});
    ASSERT_EQ(gImageGeometry.diagonal, 300);
    TestImage source(kModeRgb8, 1, 0, {0, 0, 276, 115}), expected(kModeRgb8, 1, 0, source.buffer.bounds);
    for (const int16_t frequency : {7, 8}) {
        settings.rainbowFrequency = frequency;
        for (const RenderPath *each : {&kPortablePath, Avx2Path(), Avx512Path()}) {
            TestImage output(kModeRgb8, 1, 0, source.buffer.bounds);
            gRenderPath = each ? each : &kPortablePath;
            ASSERT_TRUE(Render(settings, source, {MakeSource(140, 60, 1, 2), MakeSource(30, 9)},
                               each == &kPortablePath ? &expected : &output));
            EXPECT_TRUE(each == &kPortablePath || output.Bytes() == expected.Bytes()) << gRenderPath->name;
            ResetRenderState();
        }
    }
}

} // namespace
