// One worker's failures, cancelling and wild positions.
#include "engine/detect/Detection.h"

#include "engine/detect/BandScan.h"
#include "engine/detect/CandidateAnalysis.h"
#include "engine/detect/FloodFill.h"
#include "engine/detect/RadiusRefinement.h"
#include "engine/image/FixedPoint.h"
#include "tests/engine/TestImages.h"

namespace {

struct DetectionTest : EngineTest {
    void SetUp() override {
        EngineTest::SetUp();
        gPreciseMode = true;
    }
};

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
    EXPECT_EQ(worker.context.table.Count, 0u);
}

TEST_F(DetectionTest, AFillWithoutMemoryIsReportedAndStops) {
    const TestImage white = MakeGrayRgb(400, 400, [](int, int) { return 255; });
    CountedWorker worker(white.buffer);
    FailAllocation(1, false);
    FillFlatArea(&worker.context, 0, 0, FetchPixel(worker.shared.image, 0, 0));
    FailAllocation(0, false);
    EXPECT_EQ(worker.context.result, kMemFullErr);
    EXPECT_EQ(worker.count.unlocks, 1);
    EXPECT_EQ(TakeReportLines(),
              std::vector<std::string>{
                  "1081 1 16 Error - Exiting Plugin: Unable to allocate memory for a flood fill list."});
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

} // namespace
