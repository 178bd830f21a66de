// Layouts, star stamps and flare stamps against the yardstick, entry by entry.
#include "render/AngleTables.h"
#include "render/EffectTypes.h"
#include "render/FixedPower.h"
#include "render/RenderState.h"
#include "tests/plain/StampEntries.h"
#include "tests/reference/Cases.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

using cases::Random;
using reference::RenderContext;

using reference::StampEntry;

std::string Describe(const StampEntry &e) {
    char text[120];
    std::snprintf(text, sizeof text, "(%d, %d) value %u factors %u %u %u", e.dx, e.dy, e.value, e.factor[0],
                  e.factor[1], e.factor[2]);
    return text;
}

void ExpectSameEntries(const std::vector<StampEntry> &product, const std::vector<StampEntry> &expected) {
    for (size_t i = 0; i < std::min(product.size(), expected.size()); ++i)
        ASSERT_EQ(std::memcmp(&product[i], &expected[i], sizeof(StampEntry)), 0)
            << "entry " << i << ": " << Describe(product[i]) << ", expected " << Describe(expected[i]);
    ASSERT_EQ(product.size(), expected.size());
}

// The stamp of one phase, with its tables, out of the renderer's state.
void MakeStateCurrent(const RenderContext &context) {
    static const std::atomic<uint8_t> never{0};
    cases::MakeCurrent(context);
    PrepareCoveragePower();
    ResetRenderState();
    UpdateStamps(context.settings);
    gRenderState.abort = &never;
}

void ExpectInside(const IntRect &box, const reference::Stamp &expected) {
    if (!expected.entries.empty()) {
        EXPECT_TRUE(box.left <= expected.minX && box.right >= expected.maxX);
        EXPECT_TRUE(box.top <= expected.minY && box.bottom >= expected.maxY);
    }
}

void CompareStar(const RenderContext &context, int32_t px, int32_t py) {
    SCOPED_TRACE(testing::Message() << cases::Describe(context) << " phase " << px << ", " << py);
    MakeStateCurrent(context);
    const StarStamp &product = NeedStarStamp(px, py);
    const reference::Stamp expected = reference::BuildStar(context, px, py);
    const auto entries = EntriesOf(gRenderState.context, product, gRenderState.stars.tables);
    ASSERT_NO_FATAL_FAILURE(ExpectSameEntries(entries, SortedByPixel(expected.entries)));
    ExpectInside(product.box, expected);
}

void CompareFlare(const RenderContext &context, int32_t px, int32_t py) {
    SCOPED_TRACE(testing::Message() << cases::Describe(context) << " phase " << px << ", " << py);
    MakeStateCurrent(context);
    const FlareStamp &product = NeedFlareStamp(px, py);
    const reference::Stamp expected = reference::BuildFlare(context, px, py);
    const auto entries = EntriesOf(gRenderState.context, product, gRenderState.flares.values);
    ASSERT_NO_FATAL_FAILURE(ExpectSameEntries(entries, SortedByPixel(expected.entries)));
}

TEST(Layouts, EveryEffectTypeAndNumberOfPoints) {
    for (uint32_t type = kStandardStar; type <= kStarBurst; ++type)
        for (int16_t points = 1; points <= 32; ++points)
            for (int i = 0; i < 10; ++i) {
                Random random(20 + type, points * 100 + i);
                RenderSettings s = cases::PickSettings(&random);
                s.effectType = type;
                s.numberOfPoints = points;
                s.length = std::max<int16_t>(s.length, 1);
                const ArmList product =
                    LayoutStar({type, s.angle, points, s.length, reference::PowerFraction(s.intensity, 2.8)});
                const std::vector<reference::Arm> expected = reference::PrimaryArms(s);
                ASSERT_EQ(static_cast<size_t>(product.count), expected.size());
                for (int32_t k = 0; k < product.count; ++k) {
                    ASSERT_EQ(product.arms[k].angle, expected[k].angle) << "type " << type << " arm " << k;
                    ASSERT_EQ(product.arms[k].length, expected[k].length) << "type " << type << " arm " << k;
                    ASSERT_EQ(product.arms[k].brightness, expected[k].brightness)
                        << "type " << type << " arm " << k;
                }
            }
}

TEST(Stars, RandomStampsOfEveryEffectType) {
    BuildAngleTables();
    for (int i = 0; i < cases::Count(240); ++i) {
        Random random(30, i);
        RenderContext context = cases::PickContext(&random, random.OneOf({5, 40, 40, 120, 300}));
        context.settings.effectType = kStandardStar + i % 7;
        const auto phase = static_cast<int32_t>(random.Pick(0, 15));
        ASSERT_NO_FATAL_FAILURE(CompareStar(context, phase / 4, phase % 4)) << "case " << i;
    }
}

TEST(Stars, DefaultsInAllPhases) {
    BuildAngleTables();
    RenderContext context{{100.0, 50, 50, 50, 150, 6, 50, 30, 50, 50, 15, 30, false, kStandardStar},
                          160,
                          90,
                          reference::Precision::kPrecise,
                          16383};
    for (int32_t phase = 0; phase < 16; ++phase)
        ASSERT_NO_FATAL_FAILURE(CompareStar(context, phase / 4, phase % 4));
}

// Axis-parallel and diagonal arms: the negative ones start a pixel out.
TEST(Stars, SingleArmsInEveryEighth) {
    BuildAngleTables();
    for (int16_t angle = -900; angle <= 900; angle = static_cast<int16_t>(angle + 75)) {
        Random random(31, angle + 900);
        RenderContext context = cases::PickContext(&random, 60);
        context.settings.angle = angle;
        context.settings.effectType = kReligiousCross;
        context.settings.numberOfPoints = 4;
        context.settings.intensity = 80;
        context.settings.length = 60;
        context.settings.secondaryIntensity = 0;
        ASSERT_NO_FATAL_FAILURE(CompareStar(context, 3, 1));
    }
}

TEST(Flares, RandomStamps) {
    for (int i = 0; i < cases::Count(150); ++i) {
        Random random(40, i);
        const RenderContext context = cases::PickContext(&random, random.OneOf({3, 30, 60, 120}));
        const auto phase = static_cast<int32_t>(random.Pick(0, 15));
        ASSERT_NO_FATAL_FAILURE(CompareFlare(context, phase / 4, phase % 4)) << "case " << i;
    }
}

} // namespace
