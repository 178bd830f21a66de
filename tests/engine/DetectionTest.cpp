// What lights are found, told by what was painted; and one worker's failures, cancelling and wild positions.
#include "engine/Detection.h"

#include "engine/CandidateAnalysis.h"
#include "engine/FixedPoint.h"
#include "engine/FloodFill.h"
#include "engine/RadiusRefinement.h"
#include "tests/engine/TestWorker.h"

#include <cmath>

namespace {

struct DetectionTest : EngineTest {
    void SetUp() override {
        EngineTest::SetUp();
        gPreciseMode = true;
    }
};

double Distance(const LightSource &s, double x, double y) {
    return std::hypot(s.X + s.XQuarter * 0.25 - x, s.Y + s.YQuarter * 0.25 - y);
}

TEST_F(DetectionTest, AGaussianSpotIsFoundWithinAPixelAtEveryScale) {
    for (const int32_t side : {400, 1200, 2000, 3001}) {
        const double scale = std::max(side / 1200.0, 1.0);
        double previous = 0;
        for (const double sigma : {1.5, 5.0, 12.0}) {
            SCOPED_TRACE(testing::Message() << "side " << side << " sigma " << sigma);
            const int32_t height = side / 4;
            const Spot spot{side * 0.4 + 0.3, height * 0.55 - 0.2, sigma * scale, 240};
            const TestImage image = MakeSpots(side, height, {spot}, 10);
            const std::vector<LightSource> found = Detect(image.buffer);
            ASSERT_EQ(found.size(), 1u);
            EXPECT_LE(Distance(found[0], spot.x, spot.y), scale);
            EXPECT_EQ(found[0].State, 1u);
            const double radius = std::sqrt(found[0].RadiusSquared) / scale;
            EXPECT_GT(radius, previous);
            EXPECT_LT(radius, 2 * sigma);
            previous = radius;
        }
    }
}

// Flat areas, spots that are too wide and spots that the edge cuts are no lights.
TEST_F(DetectionTest, DisksAreMeasuredUpToTheirLimits) {
    struct Case {
        int32_t side;
        double x, radius;
        bool isFound;
    };
    for (const Case &c : {Case{300, 140.3, 8, true}, Case{300, 140.3, 30, true}, Case{400, 200, 58, true},
                          Case{400, 200, 80, false}, Case{700, 350, 200, false}, Case{300, 3, 6, false},
                          Case{300, 150, 1000, false}}) {
        const TestImage image = MakeDisk(c.side, c.x, c.side / 2 + 0.1, c.radius);
        const std::vector<LightSource> found = Detect(image.buffer);
        ASSERT_EQ(found.size(), c.isFound ? 1u : 0u) << c.radius;
        if (c.isFound && c.radius <= 30) { // near the limit only the count is sure
            EXPECT_LE(Distance(found[0], c.x, c.side / 2 + 0.1), 1.0);
            EXPECT_NEAR(std::sqrt(found[0].RadiusSquared), c.radius - 0.7, 0.8);
        }
    }
}

TEST_F(DetectionTest, PositionsAndRadiiOutOfReachAreHarmless) {
    const TestImage black = MakeGrayRgb(50, 50, [](int, int) { return 0; });
    const TestWorker worker(black.buffer);
    for (const LightSourcePosition &at : {LightSourcePosition{50, 0, 0, 0}, {20, 0, -1, 3}})
        EXPECT_FALSE(PassesRingContrast(worker.context, at, 0.3));
    EXPECT_TRUE(PassesRingContrast(worker.context, LightSourcePosition{49, 3, 0, 0}, 0.3)) << "not tested";
    EXPECT_FALSE(PassesRingContrast(worker.context, LightSourcePosition{20, 0, 20, 0}, 90));
    // Past the last shape colour and level take their fixed values.
    uint32_t levels[3];
    MeasureColorLevels(worker.context, LightSourcePosition{25, 0, 25, 0}, 97.0, levels);
    const uint32_t squared = MulPrecise(0xFFFFFF, 0xFFFFFF);
    EXPECT_EQ(levels[0], MulPrecise(0xFFFFFFFE, MulPrecise(squared, squared)));
    LightSourcePosition center{500, 3, 500, 1};
    double radius = 5.0;
    EXPECT_TRUE(RefineRadius(worker.context, &center, &radius));
    EXPECT_EQ(radius, 5.0);
    EXPECT_EQ(center.X, 501);
    center = LightSourcePosition{10, 3, 10, 3};
    radius = -0.5;
    EXPECT_TRUE(RefineRadius(worker.context, &center, &radius));
    EXPECT_EQ(center.XQuarter, 3);
}

struct LockCount {
    int locks = 0, unlocks = 0;
    std::atomic<uint8_t> *cancelWhenLocked = nullptr;
};

// A worker whose image lock is counted.
struct CountedWorker : TestWorker {
    LockCount count;
    explicit CountedWorker(const ImageBuffer &picture) : TestWorker(picture) {
        shared.imageLock = ImageLock{[](void *owner) {
                                         auto *c = static_cast<LockCount *>(owner);
                                         ++c->locks;
                                         if (c->cancelWhenLocked)
                                             *c->cancelWhenLocked = 1;
                                     },
                                     [](void *owner) { ++static_cast<LockCount *>(owner)->unlocks; }, &count};
    }
};

TEST_F(DetectionTest, AWhitePictureIsFilledOnceAndWhole) {
    const TestImage white = MakeGrayRgb(1200, 1200, [](int, int) { return 255; });
    CountedWorker worker(white.buffer);
    ScanBand(&worker.context);
    EXPECT_EQ(worker.count.locks, 1);
    EXPECT_EQ(worker.count.unlocks, 1);
    EXPECT_EQ(worker.shared.rowsDone, 1200u);
    int64_t marked = 0;
    for (int32_t i = 0; i < 1200 * 1200; ++i)
        marked += FetchPixel(worker.shared.image, i % 1200, i / 1200).selectionLevel == 0;
    EXPECT_EQ(marked, 1200 * 1200);
    EXPECT_TRUE(worker.Sources().empty());
}

TEST_F(DetectionTest, AFillStopsAtOtherColorsGapsAndUnselectedPixels) {
    TestImage image(kModeRgb8, 1, 0, IntRect{0, 0, 7, 3}, true);
    const uint8_t red[14] = {160, 160, 180, 181, 160, 160, 160, 160, 160, 160, 140, 139, 160, 160};
    for (int32_t i = 0; i < 21; ++i) {
        image.buffer.planes[0][i] = i < 14 ? red[i] : 160;
        image.buffer.planes[1][i] = image.buffer.planes[2][i] = 80;
        image.buffer.mask[i] = i >= 14 ? 0 : 1; // the last row is not selected at all; a trace is enough
    }
    TestWorker worker(image.buffer);
    FillFlatArea(&worker.context, 0, 0, FetchPixel(worker.shared.image, 0, 0));
    // 160 / 8 = 20: 180 and 140 belong, 181 and 139 do not, and the diagonal past them is no way through.
    for (int32_t i = 0; i < 14; ++i)
        EXPECT_EQ(FetchPixel(worker.shared.image, i % 7, i / 7).selectionLevel == 0, i % 7 < 3 + i / 7) << i;
    for (int32_t x = 0; x < 7; ++x)
        EXPECT_EQ(FetchPixel(worker.shared.image, x, 2).red, WorkingFrom8(160));
}

TEST_F(DetectionTest, AFillWithoutMemoryIsReportedAndStops) {
    const TestImage white = MakeGrayRgb(400, 400, [](int, int) { return 255; });
    CountedWorker worker(white.buffer);
    FailAllocation(1, false);
    FillFlatArea(&worker.context, 0, 0, FetchPixel(worker.shared.image, 0, 0));
    FailAllocation(0, false);
    EXPECT_EQ(worker.context.result, kMemFullErr);
    EXPECT_EQ(worker.count.unlocks, 1);
    const std::vector<RecordedReport> reports = TakeReports();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].record.line, 1081u);
    EXPECT_EQ(reports[0].record.kind, kUserMessage);
    EXPECT_EQ(reports[0].title, "Error - Exiting Plugin");
    EXPECT_EQ(reports[0].message, "Unable to allocate memory for a flood fill list.");
}

TEST_F(DetectionTest, AScanStopsAtThePixelThatFollowsACancel) {
    const TestImage image =
        MakeGrayRgb(300, 300, [](int, int y) { return static_cast<uint8_t>(y < 10 ? 0 : 255); });
    CountedWorker worker(image.buffer);
    worker.count.cancelWhenLocked = &worker.cancel;
    ScanBand(&worker.context);
    EXPECT_EQ(worker.shared.rowsDone, 10u);
    ScanBand(&worker.context); // cancelled before it starts
    EXPECT_EQ(worker.shared.rowsDone, 10u);
}

TEST_F(DetectionTest, AWorkerKeepsAMemoryFailureOfItsTable) {
    const TestImage image = MakeSpots(80, 80, {{40, 40, 3, 240}}, 5);
    TestWorker worker(image.buffer);
    FailAllocation(1, true);
    ScanBand(&worker.context);
    FailAllocation(0, false);
    EXPECT_EQ(worker.context.result, kMemFullErr);
    EXPECT_TRUE(worker.Sources().empty());
}

} // namespace
