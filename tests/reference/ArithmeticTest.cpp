// Sample conversions, fixed-point products, tables and the blender against the yardstick.
#include "engine/image/FixedPoint.h"
#include "render/RenderDriver.h"
#include "render/rows/PixelBlender.h"
#include "render/shape/AngleTables.h"
#include "render/shape/EffectTypes.h"
#include "render/shape/Rainbow.h"
#include "render/shape/SoftFlare.h"
#include "render/shape/SpikeProfile.h"
#include "render/stamp/SourceTint.h"
#include "tests/reference/Cases.h"
#include "tests/reference/render/ReferenceRender.h"
#include "tests/support/RecordingDiag.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace {

using cases::Random;
using reference::Precision;

template <class Sample> uint32_t ReadWorking(Sample sample) {
    uint8_t bytes[sizeof sample];
    std::memcpy(bytes, &sample, sizeof sample);
    return reference::ReadWorking(sizeof sample, bytes);
}

template <class Sample> Sample WriteWorking(uint32_t working) {
    uint8_t bytes[sizeof(Sample)];
    reference::WriteWorking(sizeof(Sample), working, bytes);
    Sample sample;
    std::memcpy(&sample, bytes, sizeof sample);
    return sample;
}

TEST(Samples, EveryIntegerSampleConvertsAsTheYardstickDoes) {
    for (uint32_t v = 0; v < 256; ++v) {
        const auto sample = static_cast<uint8_t>(v);
        ASSERT_EQ(WorkingFrom8(sample), ReadWorking(sample));
        ASSERT_EQ(WriteWorking<uint8_t>(ReadWorking(sample)), sample);
    }
    for (uint32_t v = 0; v < 65536; ++v) {
        const auto sample = static_cast<uint16_t>(v);
        ASSERT_EQ(WorkingFrom16(sample), ReadWorking(sample)) << v;
        ASSERT_EQ(WriteWorking<uint16_t>(ReadWorking(sample)), std::min(v, 32768u));
    }
}

TEST(Samples, WorkingValuesAndFloatsConvertAsTheYardstickDoes) {
    for (uint32_t w = 0; w <= kFullIntensity; w += w < 100000 ? 1 : 7) {
        ASSERT_EQ(WorkingTo8(w), WriteWorking<uint8_t>(w)) << w;
        ASSERT_EQ(WorkingTo16(w), WriteWorking<uint16_t>(w)) << w;
        const auto asFloat = WriteWorking<float>(w);
        ASSERT_EQ(WorkingToFloat(w), asFloat) << w;
        ASSERT_EQ(WorkingFromFloat(asFloat), w);
        ASSERT_EQ(ReadWorking(asFloat), w);
    }
    Random random(1, 0);
    for (int i = 0; i < cases::Count(200000); ++i) {
        uint8_t bytes[4];
        if (random.Chance(50)) {
            const auto bits = static_cast<uint32_t>(random.Pick(0, 0xFFFFFFFF));
            std::memcpy(bytes, &bits, sizeof bits);
        } else {
            cases::WriteRandomSample(&random, 4, bytes);
        }
        float sample;
        std::memcpy(&sample, bytes, sizeof sample);
        ASSERT_EQ(WorkingFromFloat(sample), reference::ReadWorking(4, bytes)) << sample;
    }
}

TEST(FixedPoint, ProductsAreTheYardsticks) {
    Random random(2, 0);
    for (int i = 0; i < cases::Count(100000); ++i) {
        const auto a = static_cast<uint32_t>(random.Pick(0, 0xFFFFFFFF));
        const auto b = static_cast<uint32_t>(random.Pick(0, 0xFFFFFFFF)) >> random.Pick(0, 31);
        ASSERT_EQ(MulPrecise(a, b), reference::Product(Precision::kPrecise, a, b));
        ASSERT_EQ(MulFast(a, b), reference::Product(Precision::kFast, a, b));
    }
}

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

TEST(AngleTables, EveryEntryIsTheYardsticks) {
    BuildAngleTables();
    for (int32_t i = 0; i < 3600; ++i) {
        ASSERT_EQ(std::memcmp(&gSineTable[i], &reference::Angles().sine[i], sizeof(float)), 0) << i;
        ASSERT_EQ(gRainbowTable[i], reference::Angles().rainbow[i]) << i;
        ASSERT_EQ(ReduceAngle(i - 7200), reference::ReduceAngle(i - 7200));
    }
}

TEST(SpikeProfile, DistancesAreTheYardsticks) {
    Random random(4, 0);
    for (int i = 0; i < cases::Count(100000); ++i) {
        const int64_t reach = random.OneOf({20, 700, 5000, 200000, 20000000});
        const auto dx = static_cast<int32_t>(random.Pick(-reach, reach));
        const auto dy = static_cast<int32_t>(random.Pick(-reach, reach));
        ASSERT_EQ(MeasureDistance(dx, dy), reference::Distance(dx, dy)) << dx << ", " << dy;
    }
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
        ValueTable table{};
        ASSERT_TRUE(
            BuildSpikeTable(inputs, context.floor / 4, random.OneOf({50u, 5000u, 45000u}), &levels, &table));
        for (int j = 0; j < 200; ++j) {
            const auto distance =
                static_cast<uint32_t>(random.Pick(0, random.OneOf({50, 5000, 45000, 1500000})));
            ASSERT_EQ(ComputeSpikeValue(inputs, distance), reference::ProfileValue(context, shape, distance))
                << distance << " length " << length << " decay " << decay << " brightness " << brightness
                << "\n"
                << cases::Describe(context);
            ASSERT_EQ(FlareValueAt(product, distance), reference::FlareValue(context, distance))
                << distance << "\n"
                << cases::Describe(context);
            const RainbowFactors factors = FactorsOfState(product, RainbowStateAt(product, distance));
            const auto expected = reference::ColorFactors(context, distance);
            for (int c = 0; c < 3; ++c)
                ASSERT_EQ(factors.factor[c], expected[c]) << distance << "\n" << cases::Describe(context);
        }
        for (uint32_t distance = 0; distance + 1 < table.count; ++distance)
            ASSERT_EQ(table.values[distance], reference::ProfileValue(context, shape, distance)) << distance;
        FreeValueTable(&table);
    }
    FreeSpikeLevels(&levels);
}

TEST(Layouts, EveryEffectTypeAndNumberOfPoints) {
    for (uint32_t type = kStandardStar; type <= kStarBurst; ++type)
        for (int i = 0; i < 320; ++i) {
            Random random(20 + type, i);
            RenderSettings s = cases::PickSettings(&random);
            s.effectType = type;
            s.numberOfPoints = static_cast<int16_t>(1 + i % 32);
            s.length = std::max<int16_t>(s.length, 1);
            const ArmList product = LayoutStar(
                {type, s.angle, s.numberOfPoints, s.length, reference::PowerFraction(s.intensity, 2.8)});
            const std::vector<reference::Arm> expected = reference::PrimaryArms(s);
            ASSERT_EQ(static_cast<size_t>(product.count), expected.size());
            for (int32_t k = 0; k < product.count; ++k) {
                SCOPED_TRACE(testing::Message()
                             << "type " << type << " points " << s.numberOfPoints << " arm " << k);
                ASSERT_EQ(product.arms[k].angle, expected[k].angle);
                ASSERT_EQ(product.arms[k].length, expected[k].length);
                ASSERT_EQ(product.arms[k].brightness, expected[k].brightness);
            }
        }
}

TEST(Threshold, CutsAreTheYardsticks) {
    for (int32_t threshold = 0; threshold <= 100; ++threshold)
        EXPECT_EQ(ThresholdCutLevel(threshold), reference::CutLevel(threshold)) << threshold;
}

TEST(SourceTint, SaturationIsTheYardsticks) {
    Random random(6, 0);
    for (int i = 0; i < cases::Count(50000); ++i) {
        const LightSource source = cases::PickSource(&random, {0, 0, 10, 10}, 100);
        const auto saturation = static_cast<int32_t>(random.Pick(-100, 100));
        const Tint tint = MakeSourceTint(source, saturation, 77);
        const auto expected = reference::Saturate({source.Red, source.Green, source.Blue}, saturation);
        for (int c = 0; c < 3; ++c)
            ASSERT_EQ(tint.channel[c], expected[c])
                << cases::Describe(source) << " saturation " << saturation;
        ASSERT_EQ(tint.value, 77u);
    }
}

TEST(PixelBlender, AllModesAreTheYardsticks) {
    for (int i = 0; i < cases::Count(200000); ++i) {
        Random random(7, i);
        gPreciseMode = random.Chance(50);
        const uint32_t mode = random.OneOf({kBlendScreen, kBlendScreen, kBlendNormal, kBlendAdd});
        const auto fraction = [&] {
            return static_cast<uint32_t>(random.Pick(0, 0xFFFFFFFE)) >> random.Pick(0, 20);
        };
        const Tint source{{fraction(), fraction(), random.Chance(5) ? 0 : fraction()}, fraction()};
        WorkingPixel pixel{};
        reference::Color destination{};
        for (int c = 0; c < 3; ++c)
            destination[c] = pixel.channel[c] = static_cast<uint32_t>(random.Pick(0, kFullIntensity));
        BlendPixel(mode, source, &pixel);
        const auto expected = reference::Blend(gPreciseMode ? Precision::kPrecise : Precision::kFast, mode,
                                               {source.channel[0], source.channel[1], source.channel[2]},
                                               source.value, destination);
        for (int c = 0; c < 3; ++c)
            ASSERT_EQ(pixel.channel[c], expected[c]) << "case " << i << " channel " << c;
    }
    EXPECT_TRUE(TakeReports().empty());
}

} // namespace
