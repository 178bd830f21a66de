// One worker's failures and cancelling.
#include "engine/detect/Detection.h"

#include "engine/detect/BandScan.h"
#include "engine/detect/CandidateAnalysis.h"
#include "engine/detect/FloodFill.h"
#include "engine/image/FixedPoint.h"
#include "tests/engine/TestImages.h"

namespace {

struct DetectionTest : EngineTest {
    void SetUp() override {
        EngineTest::SetUp();
        gPreciseMode = true;
    }
};

// The largest lights of the yardstick's pictures have a shape.
TEST_F(DetectionTest, PastTheLastShapeColourAndLevelAreFixed) {
    const TestImage black = MakeGrayRgb(50, 50, [](int, int) { return 0; });
    const TestWorker worker(black.buffer);
    uint32_t levels[3];
    MeasureColorLevels(worker.context, LightSourcePosition{25, 0, 25, 0}, 97.0, levels);
    const uint32_t squared = MulPrecise(0xFFFFFF, 0xFFFFFF);
    for (const uint32_t level : levels)
        EXPECT_EQ(level, MulPrecise(0xFFFFFFFE, MulPrecise(squared, squared)));
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
