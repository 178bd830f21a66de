// The short cuts of the inner loops. What both forms blend is held against the yardsticks in tests/reference.
#include "render/rows/PixelBlender.h"
#include "render/stamp/StampLayer.h"
#include "tests/render/RenderFixture.h"

namespace {

constexpr uint32_t kOne = kFractionOne;

// Strengths of up to half a byte's step change no byte, whatever its value and the colour; the next do.
TEST_F(RenderTest, FaintStrengthsLeaveBytesAlone) {
    constexpr uint32_t kInverses[] = {0, 1, 0x7FFFFFFF, 0xFFFFFF00, 0xFFFFFFFE};
    std::vector<uint8_t> row(256), before(256);
    for (int32_t i = 0; i < 256; ++i)
        row[i] = before[i] = static_cast<uint8_t>(i);
    const auto blend = [&row](uint32_t strength, uint32_t inverse, int32_t planes) {
        // Each of the two products takes one off.
        const std::vector<uint32_t> values(256, strength + 2);
        const BlendColor color = {0xFFFFFFFFu, {inverse, inverse, inverse}};
        kPortablePath.blend[0]({values.data(),
                                nullptr,
                                256,
                                256,
                                &color,
                                0xFFFFFFFFu,
                                0,
                                1,
                                true,
                                planes,
                                {row.data(), row.data(), row.data()}});
    };
    for (const int32_t planes : {1, 3})
        for (const uint32_t inverse : kInverses)
            for (uint32_t strength = 1; strength <= 32896; strength += strength < 32800 ? 97 : 1) {
                blend(strength, inverse, planes);
                ASSERT_EQ(row, before) << strength << " " << inverse;
            }
    blend(32900, 0, 1);
    EXPECT_EQ(row[0], 1);
}

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
