// Whole renders against the yardstick, sample for sample: each processor path, any number of workers, in one
// piece, in tiles and in place.
#include "engine/image/FixedPoint.h"
#include "render/RenderDriver.h"
#include "render/RenderState.h"
#include "render/rows/RenderPath.h"
#include "tests/reference/render/ReferenceRender.h"
#include "tests/reference/render/Scenes.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/StandardThreads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace {

using namespace cases;

const std::atomic<uint8_t> kNoAbort{0};

class Renders : public testing::Test {
protected:
    ~Renders() override {
        gRenderPath = chosen;
        FreeRenderState();
    }
    void TearDown() override { EXPECT_TRUE(TakeReports().empty()); }

    void Compare(Random *random, const Scene &scene) {
        const IntRect target = PickTarget(random, scene.bounds);
        workers = static_cast<int32_t>(random->OneOf({-1, 1, 1, 2, 3, 4, 40}));
        const Picture image = MakePicture(scene.kind, scene.bounds);
        FillAtRandom(random, image.buffer);
        const int32_t slack = random->Chance(50) ? 0 : 4;
        const IntRect room{target.left - static_cast<int32_t>(random->Pick(0, slack)), target.top,
                           target.right, target.bottom + static_cast<int32_t>(random->Pick(0, slack))};
        MakeCurrent(scene.context);
        Picture expected = MakePicture(scene.kind, room);
        FillBytes(expected.buffer, 0x3C);
        reference::Render(scene.context, image.buffer, target, scene.sources, &expected.buffer);
        const int32_t step = random->Chance(20) ? static_cast<int32_t>(random->Pick(11, 70)) : 0;
        for (const RenderPath *path : {&kPortablePath, Avx2Path(), Avx512Path()}) {
            if (!path)
                continue;
            SCOPED_TRACE(path->name);
            gRenderPath = path;
            ASSERT_NO_FATAL_FAILURE(CompareProduct(scene, image.buffer, target, step, expected.buffer));
        }
    }

    // With a step: in tiles of that many pixels.
    void CompareProduct(const Scene &scene, const ImageBuffer &image, const IntRect &target, int32_t step,
                        const ImageBuffer &expected) {
        Picture product = MakePicture(scene.kind, expected.bounds);
        FillBytes(product.buffer, 0x3C);
        const int32_t side = step > 0 ? step : 1 << 20;
        for (int32_t y = target.top; y < target.bottom; y += side)
            for (int32_t x = target.left; x < target.right; x += side)
                Draw(scene, image, IntersectRects({x, y, x + side, y + side}, target), &product.buffer);
        ASSERT_NO_FATAL_FAILURE(ExpectSamePixels(product.buffer, expected));
        if (std::memcmp(&expected.bounds, &image.bounds, sizeof(IntRect)) != 0)
            return;
        std::memcpy(product.buffer.pixels, image.pixels, static_cast<size_t>(image.pixelBytes));
        Draw(scene, product.buffer, target, &product.buffer);
        ASSERT_NO_FATAL_FAILURE(ExpectSamePixels(product.buffer, expected)) << "in place";
    }

    void Draw(const Scene &scene, const ImageBuffer &image, const IntRect &target, ImageBuffer *output) {
        std::vector<LightSource> sources = scene.sources;
        ASSERT_TRUE(RenderEffect(scene.context.settings, image, target, ViewOf(&sources), kNoAbort, output,
                                 StandardThreads(workers)));
    }

    const RenderPath *chosen = gRenderPath;
    int32_t workers = 1;
};

// More light sources of the first one's phase, so that its stamp keeps its rows.
void AddOfOnePhase(Random *random, Scene *scene) {
    for (int i = 0; i < 6; ++i) {
        LightSource source = PickSource(random, scene->bounds, scene->context.floor);
        source.XQuarter = scene->sources[0].XQuarter;
        source.YQuarter = scene->sources[0].YQuarter;
        scene->sources.push_back(source);
    }
}

// The kept stamps go from case to case, as they do from preview to preview.
TEST_F(Renders, RandomScenes) {
    for (int i = 0; i < Count(1500); ++i) {
        Random random(60, i);
        Scene scene = PickScene(&random, random.OneOf({4, 30, 60, 100, 150}));
        if (i % 2 == 0)
            AddOfOnePhase(&random, &scene);
        if (random.Chance(10))
            ResetRenderState();
        ASSERT_NO_FATAL_FAILURE(Compare(&random, scene)) << "case " << i;
    }
}

void ChangeOneThing(Random *random, const Scene &other, Scene *scene) {
    RenderSettings &s = scene->context.settings;
    const RenderSettings &o = other.context.settings;
    const int64_t field = random->Pick(0, 15);
    if (field < 11) { // the numbers lie side by side
        const size_t at = offsetof(RenderSettings, threshold) + static_cast<size_t>(field) * sizeof(int16_t);
        std::memcpy(reinterpret_cast<char *>(&s) + at, reinterpret_cast<const char *>(&o) + at,
                    sizeof(int16_t));
    } else if (field == 11)
        s.effectType = o.effectType;
    else if (field == 12)
        scene->context.floor = random->OneOf({kFloor8Bit, kFloor16Bit, kFloor32Bit, kFloorPreview});
    else if (field == 13)
        scene->context.precision = other.context.precision;
    else if (field == 14)
        s.scale = o.scale;
    else
        *scene = other;
    s.threshold = std::max<int16_t>(s.threshold, 60);
}

// A stamp that should have been dropped and was not shows.
TEST_F(Renders, ChangingOneThingAtATime) {
    Random random(51, 0);
    Scene scene = PickScene(&random, 40);
    for (int i = 0; i < Count(400); ++i) {
        ChangeOneThing(&random, PickScene(&random, 40), &scene);
        ASSERT_NO_FATAL_FAILURE(Compare(&random, scene)) << "step " << i;
    }
}

// Wide soft arms and long rows, where a row is worked on in several pieces.
TEST_F(Renders, LargeScenes) {
    for (int i = 0; i < Count(4); ++i) {
        Random random(61, i);
        Scene scene = PickScene(&random, 60);
        scene.context.width = static_cast<int32_t>(random.Pick(700, 1300));
        scene.context.height = static_cast<int32_t>(random.Pick(300, 700));
        scene.context.settings.scale = 100.0;
        scene.bounds = {10, 20, 10 + scene.context.width, 20 + scene.context.height};
        if (i % 2 == 0)
            scene.context.settings.spikeSharpness = static_cast<int16_t>(random.Pick(0, 20));
        scene.sources.clear();
        for (int j = 0; j < 5; ++j)
            scene.sources.push_back(PickSource(&random, scene.bounds, scene.context.floor));
        if (i >= 2)
            AddOfOnePhase(&random, &scene);
        ASSERT_NO_FATAL_FAILURE(Compare(&random, scene)) << "case " << i;
    }
}

} // namespace
