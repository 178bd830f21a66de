// The steps of detection one by one against the yardstick, on inputs that lie near their limits.
#include "engine/detect/CandidateAnalysis.h"
#include "engine/detect/FloodFill.h"
#include "engine/detect/RadialProfile.h"
#include "engine/detect/RadiusRefinement.h"
#include "engine/detect/WorkerContext.h"
#include "tests/reference/Cases.h"
#include "tests/reference/NightScene.h"
#include "tests/reference/detect/ReferenceProfile.h"
#include "tests/reference/detect/ReferenceRefine.h"
#include "tests/support/RecordingDiag.h"

#include "engine/image/FixedPoint.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>

namespace {

using cases::Random;
using reference::Analysis;

const std::atomic<uint8_t> kNoCancel{0};

// The product's view of a yardstick's image; `samples` stays the caller's.
AnalysisImage ViewOf(const Analysis &analysis, std::vector<PixelSample> *samples) {
    return {analysis.bounds, analysis.scale, analysis.maxBrightness, samples->data(),
            samples->size() * sizeof(PixelSample)};
}

// A product's worker over a copy of a yardstick's image.
class Worker {
public:
    explicit Worker(const Analysis &analysis) : samples(analysis.samples) {
        shared.image = ViewOf(analysis, &samples);
        shared.cancel = &kNoCancel;
        EXPECT_EQ(InitializeWorkerContext(0, analysis.bounds, &shared, &context), kNoError);
    }
    ~Worker() { ReleaseWorkerContext(&context); }

    std::vector<PixelSample> samples;
    DetectionShared shared{};
    WorkerContext context{};
};

// Brightness along one ray: a plateau, then a slope about as steep as the edge test asks for, then noise.
std::vector<uint32_t> PickRay(Random *random, double start, int length) {
    std::vector<uint32_t> ray;
    const int64_t plateau = random->Pick(0, random->OneOf({1, 3, 8, 20, 140}));
    const double fall = start * random->Real(0, random->OneOf({0.004, 0.02, 0.2}));
    const double noise = start * random->OneOf({0.0, 0.0005, 0.004});
    double level = start;
    for (int k = 1; k <= length; ++k) {
        if (k > plateau)
            level = std::max(0.0, level - fall);
        ray.push_back(
            static_cast<uint32_t>(std::clamp(level + random->Real(-noise, noise), 0.0, 16777215.0)));
    }
    return ray;
}

// An image whose eight rays from the middle are drawn separately; what lies between them is never looked at.
Analysis PickRays(Random *random, int32_t reach) {
    const int32_t side = 2 * reach + 1;
    Analysis analysis{{-reach, -reach, reach + 1, reach + 1}, 1.0, 0, {}};
    analysis.samples.assign(static_cast<size_t>(side) * side, {0, 0, 0, 1, 0xFFFFFFFF});
    const double start = random->Real(4e6, 16777215.0);
    analysis.maxBrightness = static_cast<uint32_t>(random->Real(start, 16777215.0));
    const auto at = [&](int32_t x, int32_t y) -> PixelSample & {
        return analysis.samples[static_cast<size_t>(y + reach) * side + (x + reach)];
    };
    const auto centre = static_cast<uint32_t>(start);
    at(0, 0) = {centre, centre, centre, 1, 0xFFFFFFFF};
    const int64_t tint = random->Chance(30) ? random->Pick(0, centre / 6) : 0;
    for (const DirectionStep &step : kDirectionSteps) {
        const std::vector<uint32_t> ray = PickRay(random, start, reach);
        for (int32_t k = 1; k <= reach; ++k) {
            const uint32_t v = ray[k - 1];
            at(k * step.dx, k * step.dy) = {v, v, v - static_cast<uint32_t>(std::min<int64_t>(tint, v)), 1,
                                            0xFFFFFFFF};
        }
    }
    return analysis;
}

TEST(DetectionSteps, ProfilesStatisticsAndCentres) {
    int flat = 0;
    for (int i = 0; i < cases::Count(1200); ++i) {
        Random random(80, i);
        Analysis analysis =
            PickRays(&random, static_cast<int32_t>(random.OneOf({3, 12, 30, 30, 60, 60, 136, 137, 140})));
        const Worker worker(analysis);
        RadialProfile product{};
        const bool notFlat = MeasureProfile(worker.context.picture, 0, 0, &product);
        reference::Profile expected = reference::MeasureProfile(&analysis, 0, 0);
        ASSERT_EQ(notFlat, reference::Fetch(analysis, 0, 0).selectionLevel != 0) << "case " << i;
        flat += !notFlat;
        for (const double share : {0.0, 0.75, 1.2}) {
            for (int d = 0; d < 8; ++d)
                ASSERT_EQ(product.radii[d], expected.radius[d]) << "case " << i << " direction " << d;
            const double tolerance = reference::MeasureRadii(&expected, 0).deviation * share;
            const ProfileStatistics statistics = MeasureProfileStatistics(tolerance, &product);
            const reference::RadiusStatistics wanted = reference::MeasureRadii(&expected, tolerance);
            ASSERT_EQ(statistics.mean, wanted.mean) << "case " << i;
            ASSERT_EQ(statistics.deviation, wanted.deviation) << "case " << i;
        }
        LightSourcePosition position{};
        const auto centre = reference::FindCentre(expected, 0, 0);
        ASSERT_EQ(FindProfileCenter(product, 0, 0, &position), centre.has_value()) << "case " << i;
        if (centre) {
            ASSERT_EQ(position.X * 4 + position.XQuarter, centre->x * 4 + centre->xQuarter) << "case " << i;
            ASSERT_EQ(position.Y * 4 + position.YQuarter, centre->y * 4 + centre->yQuarter) << "case " << i;
        }
    }
    std::printf("%d flat profiles\n", flat);
    EXPECT_GT(flat, 0);
}

// Patches whose colours lie around an eighth of the reference's away from it.
TEST(DetectionSteps, FlatAreas) {
    for (int i = 0; i < cases::Count(100); ++i) {
        Random random(81, i);
        const auto width = static_cast<int32_t>(random.Pick(1, 60)),
                   height = static_cast<int32_t>(random.Pick(1, 60));
        Analysis analysis{{-7, 9, width - 7, height + 9}, 1.0, 16777215, {}};
        const auto base = static_cast<uint32_t>(random.Pick(1000, 14000000));
        for (int64_t j = 0; j < int64_t{width} * height; ++j) {
            const auto channel = [&] {
                const auto apart = static_cast<int64_t>(base * random.OneOf({0.12, 0.125, 0.13}));
                return static_cast<uint32_t>(
                    base + (random.Chance(90) ? random.Pick(-10, 10) : random.Pick(-apart, apart)));
            };
            analysis.samples.push_back(
                {channel(), channel(), channel(), random.Chance(90) ? 1u : 0u,
                 random.OneOf({0xFFFFFFFFu, 0xFFFFFFFFu, 1u, random.Chance(20) ? 0u : 9u})});
        }
        Worker worker(analysis);
        const auto x = static_cast<int32_t>(random.Pick(-7, width - 8)),
                   y = static_cast<int32_t>(random.Pick(9, height + 8));
        FillFlatArea(&worker.context, x, y, reference::Fetch(analysis, x, y));
        reference::FloodFill(&analysis, x, y);
        ASSERT_EQ(std::memcmp(worker.samples.data(), analysis.samples.data(),
                              analysis.samples.size() * sizeof(PixelSample)),
                  0)
            << "case " << i;
    }
    EXPECT_TRUE(TakeReports().empty());
}

// Contrast, refinement and colour at centres and radii that need not fit a light.
TEST(DetectionSteps, ContrastRefinementAndColor) {
    gPreciseMode = true;
    int passed = 0, settled = 0, measured = 0;
    for (int i = 0; i < cases::Count(25); ++i) {
        Random random(82, i);
        const auto side = static_cast<int32_t>(random.OneOf({20, 60, 120}));
        const cases::Picture image(kModeRgb8, 1, 0, {0, 0, side, side}, false);
        cases::PaintNightScene(&random, static_cast<cases::SceneFlavor>(i % cases::kSceneFlavors),
                               image.buffer);
        const Analysis analysis = reference::PrepareAnalysis(image.buffer);
        Worker worker(analysis);
        for (int j = 0; j < 25; ++j, ++measured) {
            const LightSourcePosition at{
                static_cast<int32_t>(random.Pick(-2, side + 1)), static_cast<int32_t>(random.Pick(0, 3)),
                static_cast<int32_t>(random.Pick(-2, side + 1)), static_cast<int32_t>(random.Pick(0, 3))};
            const double radius = random.Real(0.01, random.OneOf({2.5, 2.5, 12.0, 64.0}));
            reference::Centre centre{at.X, at.XQuarter, at.Y, at.YQuarter};
            const bool passes = reference::PassesRingContrast(analysis, centre, radius);
            ASSERT_EQ(PassesRingContrast(worker.context, at, radius), passes)
                << i << " " << j << " radius " << radius;
            passed += passes;
            LightSourcePosition moved = at;
            double productRadius = radius, expectedRadius = radius;
            const bool refined = reference::Refine(analysis, &centre, &expectedRadius);
            ASSERT_EQ(RefineRadius(worker.context, &moved, &productRadius), refined)
                << i << " " << j << " radius " << radius;
            settled += refined;
            ASSERT_EQ(productRadius, expectedRadius);
            ASSERT_EQ(moved.X, centre.x);
            ASSERT_EQ(moved.Y, centre.y);
            uint32_t levels[3];
            MeasureColorLevels(worker.context, moved, productRadius, levels);
            const reference::LightColor light = reference::MeasureLight(analysis, centre, expectedRadius);
            ASSERT_EQ(levels[0], light.red) << i << " " << j << " radius " << productRadius;
            ASSERT_EQ(levels[1], light.green) << i << " " << j;
            ASSERT_EQ(levels[2], light.blue) << i << " " << j;
        }
    }
    std::printf("%d of %d passed the contrast test, %d came to rest\n", passed, measured, settled);
    EXPECT_GT(passed, 0);
    EXPECT_LT(settled, measured);
}

} // namespace
