// The renderer against its plain form, sample for sample: both processor paths, any number of workers.
#include "engine/FixedPoint.h"
#include "render/RenderDriver.h"
#include "render/RenderPath.h"
#include "tests/plain/PlainRender.h"
#include "tests/reference/Scenes.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/StandardThreads.h"

#include <gtest/gtest.h>

namespace {

using namespace cases;

const std::atomic<uint8_t> kNoAbort{0};

class PlainRenders : public testing::Test {
protected:
    ~PlainRenders() override {
        gRenderPath = chosen;
        FreeRenderState();
        plain::FreeRenderState();
    }
    void TearDown() override { EXPECT_TRUE(TakeReports().empty()); }

    // Renders a scene both ways, the renderer's way along each path.
    void Compare(Random *random, const Scene &scene) {
        const IntRect target = PickTarget(random, scene.bounds);
        const auto workers = static_cast<int32_t>(random->Pick(1, 4));
        SCOPED_TRACE(testing::Message() << Describe(scene, target) << "\nworkers " << workers);
        const Picture image = MakePicture(scene.kind, scene.bounds);
        FillAtRandom(random, image.buffer);
        const IntRect room{target.left - static_cast<int32_t>(random->Pick(0, 4)), target.top, target.right,
                           target.bottom + static_cast<int32_t>(random->Pick(0, 4))};
        std::vector<LightSource> sources = scene.sources;
        MakeCurrent(scene.context);
        Picture expected = MakePicture(scene.kind, room);
        FillBytes(expected.buffer, 0x3C);
        ASSERT_TRUE(plain::RenderEffect(scene.context.settings, image.buffer, target, ViewOf(&sources),
                                        kNoAbort, &expected.buffer));
        for (const RenderPath *path : {&kPortablePath, Avx2Path()}) {
            if (!path)
                continue;
            gRenderPath = path;
            Picture product = MakePicture(scene.kind, room);
            FillBytes(product.buffer, 0x3C);
            ASSERT_TRUE(RenderEffect(scene.context.settings, image.buffer, target, ViewOf(&sources), kNoAbort,
                                     &product.buffer, StandardThreads(workers)));
            ASSERT_NO_FATAL_FAILURE(ExpectSamePixels(product.buffer, expected.buffer)) << path->name;
        }
    }
    const RenderPath *chosen = gRenderPath;
};

// More light sources of the first one's phase, so that its stamp keeps its rows.
void AddOfOnePhase(Random *random, Scene *scene) {
    if (scene->sources.empty())
        return;
    for (int i = 0; i < 6; ++i) {
        LightSource source = PickSource(random, scene->bounds, scene->context.floor);
        source.XQuarter = scene->sources[0].XQuarter;
        source.YQuarter = scene->sources[0].YQuarter;
        scene->sources.push_back(source);
    }
}

TEST_F(PlainRenders, RandomScenes) {
    for (int i = 0; i < Count(1500); ++i) {
        Random random(60, i);
        Scene scene = PickScene(&random, random.OneOf({4, 30, 60, 100, 150}));
        if (i % 2 == 0)
            AddOfOnePhase(&random, &scene);
        ASSERT_NO_FATAL_FAILURE(Compare(&random, scene)) << "case " << i;
    }
}

// Wide soft arms and long rows, where a row is worked on in several pieces.
TEST_F(PlainRenders, LargeScenes) {
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
