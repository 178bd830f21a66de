#include "engine/ShapeSampler.h"

#include "diag/BufferUsage.h"
#include "tests/engine/TestWorker.h"

#include <cmath>

namespace {

using ShapeSamplerTest = EngineTest;

struct SlowSums {
    int64_t count = 0;
    double sum = 0, squares = 0, colors[3] = {};
};

// Every pixel of the picture in reading order, told by its distance in quarter pixels.
SlowSums SumSlowly(const AnalysisImage &image, int32_t index, bool isRing, const LightSourcePosition &c) {
    SlowSums s;
    for (int32_t y = image.bounds.top; y < image.bounds.bottom; ++y)
        for (int32_t x = image.bounds.left; x < image.bounds.right; ++x) {
            const double distance = std::hypot(4 * (x - c.X) - c.XQuarter, 4 * (y - c.Y) - c.YQuarter);
            if (distance >= index + 2 || (isRing && distance < index - 2))
                continue;
            const PixelSample p = FetchPixel(image, x, y);
            const double brightness = PixelBrightness(p);
            ++s.count;
            s.sum += brightness;
            s.squares += brightness * brightness;
            s.colors[0] += p.red;
            s.colors[1] += p.green;
            s.colors[2] += p.blue;
        }
    return s;
}

void ExpectSameStatistics(ShapeRecord *shape, const AnalysisImage &image, const SlowSums &slow,
                          const LightSourcePosition &c) {
    ShapeStatistics fast{-7, -7};
    const bool measured = shape->sample(shape, image, c, &fast);
    ASSERT_EQ(measured, slow.count > 0);
    const double n = static_cast<double>(slow.count), mean = slow.sum / n;
    ASSERT_EQ(fast.mean, measured ? mean : -7);
    ASSERT_EQ(fast.deviation, measured ? std::sqrt(std::max(0.0, slow.squares / n - mean * mean)) : -7);
}

void ExpectSameColor(ShapeRecord *shape, const AnalysisImage &image, const SlowSums &slow,
                     const LightSourcePosition &c) {
    uint32_t color[3] = {7, 7, 7};
    ASSERT_EQ(SampleRingColor(shape, image, c, color), slow.count > 0);
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(color[i],
                  slow.count ? static_cast<uint32_t>(slow.colors[i] / static_cast<double>(slow.count)) : 7u);
}

TEST_F(ShapeSamplerTest, EqualsASlowSumAtEveryPhaseInsideAndAcrossTheEdges) {
    const TestImage noise = MakeNoise(70, 61, 5);
    TestWorker worker(noise.buffer);
    const AnalysisImage &image = worker.shared.image;
    for (const int32_t index : {0, 1, 2, 3, 4, 7, 12, 25, 60, 100, 383})
        for (const auto &[x, y] : {std::pair{35, 30}, {0, 0}, {69, 3}, {-4, 30}, {35, 75}, {-60, -60}})
            for (int32_t phase = 0; phase < kSubShapesPerShape; ++phase) {
                const LightSourcePosition c{x, phase % 4, y, phase / 4};
                const SlowSums ring = SumSlowly(image, index, true, c);
                ExpectSameStatistics(&worker.context.disks[index], image, SumSlowly(image, index, false, c),
                                     c);
                ExpectSameStatistics(&worker.context.rings[index], image, ring, c);
                ExpectSameColor(&worker.context.rings[index], image, ring, c);
                if (HasFatalFailure())
                    FAIL() << "index " << index << " at " << x << ',' << y << " phase " << phase;
            }
}

TEST_F(ShapeSamplerTest, TheSmallestShapesMayHaveNoPixelBetweenFour) {
    const TestImage white = MakeGrayRgb(9, 9, [](int, int) { return 255; });
    TestWorker worker(white.buffer);
    ShapeStatistics statistics;
    ShapeRecord *smallest = &worker.context.disks[0];
    EXPECT_TRUE(
        smallest->sample(smallest, worker.shared.image, LightSourcePosition{4, 1, 4, 1}, &statistics));
    EXPECT_FALSE(
        smallest->sample(smallest, worker.shared.image, LightSourcePosition{4, 2, 4, 2}, &statistics));
}

TEST_F(ShapeSamplerTest, ShapesAreMadeOnceAndWithoutMemoryMeasureTheSame) {
    const TestImage noise = MakeNoise(70, 61, 6);
    TestWorker worker(noise.buffer);
    const LightSourcePosition c{30, 1, 30, 2};
    ShapeRecord *shape = &worker.context.rings[40];
    ShapeStatistics starved{}, made{}, again{};
    FailAllocation(1, true);
    ASSERT_TRUE(shape->sample(shape, worker.shared.image, c, &starved));
    FailAllocation(0, false);
    ASSERT_TRUE(shape->sample(shape, worker.shared.image, c, &made));
    ASSERT_TRUE(shape->sample(shape, worker.shared.image, c, &again));
    EXPECT_EQ(AllocationsMade(), 1);
    EXPECT_EQ(starved.mean, made.mean);
    EXPECT_EQ(starved.deviation, made.deviation);
    EXPECT_EQ(again.deviation, made.deviation);
}

TEST(ShapeContrast, IsNeverNegative) {
    EXPECT_EQ(ShapeContrast({100, 20}), 60);
    EXPECT_EQ(ShapeContrast({100, 50}), 0);
    EXPECT_EQ(ShapeContrast({100, 51}), 0);
}

} // namespace
