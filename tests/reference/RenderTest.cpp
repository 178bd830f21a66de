// Whole renders against the yardstick, sample for sample, and one-piece renders against tiles.
#include "engine/FixedPoint.h"
#include "render/RenderDriver.h"
#include "tests/reference/Cases.h"
#include "tests/reference/ReferenceRender.h"
#include "tests/reference/Scenes.h"
#include "tests/support/RecordingDiag.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace {

using namespace cases;

const std::atomic<uint8_t> kNoAbort{0};

void RenderProduct(const Scene &scene, const ImageBuffer &image, const IntRect &target, ImageBuffer *output) {
    std::vector<LightSource> sources = scene.sources;
    cases::MakeCurrent(scene.context);
    ASSERT_TRUE(RenderEffect(scene.context.settings, image, target, ViewOf(&sources), kNoAbort, output));
}

void CompareRender(Random *random, const Scene &scene) {
    const IntRect target = PickTarget(random, scene.bounds);
    SCOPED_TRACE(Describe(scene, target));
    const Picture image = MakePicture(scene.kind, scene.bounds);
    cases::FillAtRandom(random, image.buffer);
    const IntRect room{target.left - static_cast<int32_t>(random->Pick(0, 4)), target.top, target.right,
                       target.bottom + static_cast<int32_t>(random->Pick(0, 4))};
    Picture product = MakePicture(scene.kind, room), expected = MakePicture(scene.kind, room);
    cases::FillBytes(product.buffer, 0x3C);
    cases::FillBytes(expected.buffer, 0x3C);
    ASSERT_NO_FATAL_FAILURE(RenderProduct(scene, image.buffer, target, &product.buffer));
    reference::Render(scene.context, image.buffer, target, scene.sources, &expected.buffer);
    ExpectSamePixels(product.buffer, expected.buffer);
}

class Renders : public testing::Test {
protected:
    ~Renders() override { FreeRenderState(); }
    void TearDown() override { EXPECT_TRUE(TakeReports().empty()); }
};

// The kept stamps go from case to case, as they do from preview to preview.
TEST_F(Renders, RandomScenes) {
    for (int i = 0; i < cases::Count(450); ++i) {
        Random random(50, i);
        const Scene scene = PickScene(&random, random.OneOf({4, 30, 60, 60, 100}));
        if (random.Chance(10))
            ResetRenderState();
        ASSERT_NO_FATAL_FAILURE(CompareRender(&random, scene)) << "case " << i;
    }
}

// One field changes at a time: a stamp that should have been dropped and was not shows.
TEST_F(Renders, ChangingOneThingAtATime) {
    Random random(51, 0);
    Scene scene = PickScene(&random, 40);
    for (int i = 0; i < cases::Count(400); ++i) {
        const Scene other = PickScene(&random, 40);
        RenderSettings &s = scene.context.settings;
        const RenderSettings &o = other.context.settings;
        int16_t RenderSettings::*const fields[] = {&RenderSettings::threshold,
                                                   &RenderSettings::intensity,
                                                   &RenderSettings::length,
                                                   &RenderSettings::angle,
                                                   &RenderSettings::numberOfPoints,
                                                   &RenderSettings::spikeSharpness,
                                                   &RenderSettings::colorSaturation,
                                                   &RenderSettings::rainbowIntensity,
                                                   &RenderSettings::rainbowFrequency,
                                                   &RenderSettings::secondaryIntensity,
                                                   &RenderSettings::softFlareIntensity};
        const int64_t field = random.Pick(0, 15);
        if (field < 11)
            s.*fields[field] = o.*fields[field];
        else if (field == 11)
            s.effectType = o.effectType;
        else if (field == 12)
            scene.context.floor = random.OneOf({kFloor8Bit, kFloor16Bit, kFloor32Bit, kFloorPreview});
        else if (field == 13)
            scene.context.precision = other.context.precision;
        else if (field == 14)
            s.scale = o.scale;
        else
            scene = other;
        scene.context.settings.threshold = std::max<int16_t>(scene.context.settings.threshold, 60);
        ASSERT_NO_FATAL_FAILURE(CompareRender(&random, scene)) << "step " << i << " field " << field;
    }
}

TEST_F(Renders, OnePieceEqualsTiles) {
    for (int i = 0; i < cases::Count(60); ++i) {
        Random random(52, i);
        const Scene scene = PickScene(&random, 120);
        SCOPED_TRACE(Describe(scene, scene.bounds));
        const Picture image = MakePicture(scene.kind, scene.bounds);
        cases::FillAtRandom(&random, image.buffer);
        Picture whole = MakePicture(scene.kind, scene.bounds), joined = MakePicture(scene.kind, scene.bounds);
        ASSERT_NO_FATAL_FAILURE(RenderProduct(scene, image.buffer, scene.bounds, &whole.buffer));
        const auto step = static_cast<int32_t>(random.Pick(11, 70));
        for (int32_t y = scene.bounds.top; y < scene.bounds.bottom; y += step)
            for (int32_t x = scene.bounds.left; x < scene.bounds.right; x += step) {
                const IntRect tile = IntersectRects({x, y, x + step, y + step}, scene.bounds);
                ASSERT_NO_FATAL_FAILURE(RenderProduct(scene, image.buffer, tile, &joined.buffer));
            }
        ASSERT_NO_FATAL_FAILURE(ExpectSamePixels(joined.buffer, whole.buffer)) << "case " << i;
    }
}

// Float samples that no star reaches come back bit for bit, and a highlight is never changed.
TEST_F(Renders, FloatSpecialsAndHighlights) {
    for (int i = 0; i < cases::Count(60); ++i) {
        Random random(53, i);
        Scene scene = PickScene(&random, 50);
        scene.kind = {random.Chance(50) ? kModeRgb32 : kModeGray32, 4, 0, false};
        scene.context.settings.effectsOnly = false;
        SCOPED_TRACE(Describe(scene, scene.bounds));
        const Picture image = MakePicture(scene.kind, scene.bounds);
        cases::FillAtRandom(&random, image.buffer);
        Picture product = MakePicture(scene.kind, scene.bounds);
        ASSERT_NO_FATAL_FAILURE(RenderProduct(scene, image.buffer, scene.bounds, &product.buffer));
        for (int64_t j = 0; j < image.buffer.pixelBytes; j += 4) {
            float before, after;
            std::memcpy(&before, image.buffer.pixels + j, 4);
            std::memcpy(&after, product.buffer.pixels + j, 4);
            if (before >= 1.0f) {
                ASSERT_EQ(std::memcmp(&before, &after, 4), 0);
            } else if (std::memcmp(&before, &after, 4) != 0) {
                ASSERT_TRUE(after >= 0.0f && after <= 1.0f) << before << " became " << after;
            }
        }
    }
}

TEST_F(Renders, ThresholdCutIsTheYardsticks) {
    for (int32_t threshold = 0; threshold <= 100; ++threshold)
        EXPECT_EQ(ThresholdCutLevel(threshold), reference::CutLevel(threshold)) << threshold;
}

} // namespace
