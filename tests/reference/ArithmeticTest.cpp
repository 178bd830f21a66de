// What whole pictures do not reach: every size, the profiles of the largest pictures, every cut, all modes of
// the blender.
#include "engine/image/FixedPoint.h"
#include "render/RenderDriver.h"
#include "render/rows/PixelBlender.h"
#include "render/shape/AngleTables.h"
#include "render/shape/Rainbow.h"
#include "render/shape/SoftFlare.h"
#include "render/shape/SpikeProfile.h"
#include "tests/reference/Cases.h"
#include "tests/reference/render/ReferenceRender.h"
#include "tests/support/RecordingDiag.h"

#include <gtest/gtest.h>

namespace {

using cases::Random;
using reference::Precision;

TEST(Geometry, DiagonalsAreTheYardsticks) {
    Random random(3, 0);
    const auto check = [](int32_t width, int32_t height) {
        SetImageGeometry({-5, 7, width - 5, height + 7});
        ASSERT_EQ(gImageGeometry.diagonal, reference::Diagonal(width, height)) << width << " x " << height;
    };
    for (int32_t n = 1; n <= 32767; ++n) {
        check(n, 1);
        check(n, n);
        check(n, static_cast<int32_t>(random.Pick(1, 32767)));
    }
    for (int32_t k = 1; 5 * k <= 32767; ++k)
        check(4 * k, 3 * k);
}

// Values at chosen distances, over parameters that include the largest pictures.
TEST(SpikeProfile, ValuesFactorsAndFlareAreTheYardsticks) {
    BuildAngleTables();
    SpikeLevels levels{};
    for (int i = 0; i < cases::Count(300); ++i) {
        Random random(5, i);
        reference::RenderContext context = cases::PickContext(&random, random.OneOf({50, 300, 6000, 32767}));
        cases::MakeCurrent(context);
        const StampContext product = MakeStampContext(context.settings);
        const auto decay = static_cast<int32_t>(random.Pick(0, 100));
        const auto length = static_cast<int32_t>(random.Pick(1, 150));
        const auto brightness = static_cast<uint32_t>(random.Pick(0, 0xFFFFFFFE));
        const reference::ArmShape shape{{0, length, brightness}, 1, 1, decay};
        const SpikeProfileInputs inputs{length, decay, brightness, context.settings.scale,
                                        gImageGeometry.diagonal};
        ValueTable table = DescribeSpike(inputs, context.floor / 4, random.OneOf({50u, 5000u, 45000u}));
        ASSERT_TRUE(AllocateValueTable(table.count - 1, &table));
        for (uint32_t block = 0; block * kBlockDistances < table.count; ++block)
            FillSpikeBlock(block, &levels, &table);
        for (int j = 0; j < 200; ++j) {
            const auto distance =
                static_cast<uint32_t>(random.Pick(0, random.OneOf({50, 5000, 45000, 1500000})));
            ASSERT_EQ(ComputeSpikeValue(inputs, distance), reference::ProfileValue(context, shape, distance))
                << "case " << i << " at " << distance;
            const uint32_t state = RainbowStateAt(product, distance);
            const auto [first, last] = StatesBetween(product, distance - distance / 9, distance * 8 / 7);
            ASSERT_TRUE(state >= first && state <= last && last < kRainbowStates) << i << " at " << distance;
            const RainbowFactors factors = FactorsOfState(product, state);
            const auto expected = reference::ColorFactors(context, distance);
            for (int c = 0; c < 3; ++c)
                ASSERT_EQ(factors.factor[c], expected[c]) << "case " << i << " at " << distance;
        }
        for (uint32_t distance = 0; distance + 1 < table.count; ++distance)
            ASSERT_EQ(table.values[distance], reference::ProfileValue(context, shape, distance)) << distance;
        for (uint32_t distance = 0; distance <= table.count; distance += 7) {
            ASSERT_EQ(SpikeValueAt(table, distance), ValueAt(table, distance));
            ASSERT_GE(SpikeValueBound(table, distance), ValueAt(table, distance));
        }
        FreeValueTable(&table);
        ASSERT_TRUE(BuildFlareTable(product, &table));
        for (uint32_t distance = 0; distance + 1 < table.count; distance += distance / 1000 + 1)
            ASSERT_EQ(table.values[distance], reference::FlareValue(context, distance)) << distance;
        FreeValueTable(&table);
    }
}

TEST(Threshold, CutsAreTheYardsticks) {
    for (int32_t threshold = 0; threshold <= 100; ++threshold)
        EXPECT_EQ(ThresholdCutLevel(threshold), reference::CutLevel(threshold)) << threshold;
}

TEST(PixelBlender, AllModesAreTheYardsticks) {
    for (int i = 0; i < cases::Count(200000); ++i) {
        Random random(7, i);
        gPreciseMode = random.Chance(50);
        const uint32_t mode =
            random.OneOf({kBlendScreen, kBlendScreen, kBlendNormal, kBlendAdd, 0x73637272u});
        const auto fraction = [&] {
            return static_cast<uint32_t>(random.Pick(0, 0xFFFFFFFE)) >> random.Pick(0, 20);
        };
        const Tint source{{fraction(), fraction(), random.Chance(5) ? 0 : fraction()}, fraction()};
        WorkingPixel pixel{};
        reference::Color destination{};
        for (int c = 0; c < 3; ++c)
            destination[c] = pixel.channel[c] = static_cast<uint32_t>(random.Pick(0, kFullIntensity));
        BlendPixel(mode, source, &pixel);
        EXPECT_EQ(TakeReportLines(),
                  mode != 0x73637272
                      ? std::vector<std::string>{}
                      : std::vector<std::string>{
                            "249 1 16 Debug:  Unexpected Error: Blending mode not implemented."});
        const auto expected = reference::Blend(gPreciseMode ? Precision::kPrecise : Precision::kFast, mode,
                                               {source.channel[0], source.channel[1], source.channel[2]},
                                               source.value, destination);
        for (int c = 0; c < 3; ++c)
            ASSERT_EQ(pixel.channel[c], expected[c]) << "case " << i << " channel " << c;
    }
}

} // namespace
