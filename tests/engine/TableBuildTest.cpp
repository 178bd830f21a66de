// Contexts and whole builds: missing buffers, depths, cancelling.
#include "engine/TableBuild.h"

#include "diag/BufferUsage.h"
#include "engine/SerialBuild.h"
#include "engine/detect/BandScan.h"
#include "engine/image/FixedPoint.h"
#include "tests/engine/TestImages.h"

#include <tuple>

namespace {

using WorkerContextTest = EngineTest;

TEST_F(WorkerContextTest, EveryMissingBufferIsReportedAndTheNextStillTried) {
    const char *buffers[][2] = {{"901", "DiskParamsBuff"},
                                {"907", "RingParamsBuff"},
                                {"918", "DiskShapeBuff"},
                                {"930", "RingShapeBuff"}};
    DetectionShared shared{};
    shared.image.bounds = IntRect{0, 0, 10, 10};
    for (const bool all : {false, true})
        for (int64_t failing = 1; failing <= 4; ++failing) {
            WorkerContext worker;
            FailAllocation(failing, all);
            EXPECT_EQ(InitializeWorkerContext(3, shared.image.bounds, &shared, &worker), kMemFullErr);
            FailAllocation(0, false);
            std::vector<std::string> expected;
            for (int64_t i = failing; i <= (all ? 4 : failing); ++i)
                expected.push_back(buffers[i - 1][0] +
                                   std::string(" 0 16 Debug:  Unexpected Error: Thread 3: Could not allocate "
                                               "buffer for ") +
                                   buffers[i - 1][1] + ".");
            EXPECT_EQ(TakeReportLines(), expected);
            ReleaseWorkerContext(&worker);
            EXPECT_EQ(BufferBytesInUse(), 0);
        }
}

using TableBuildTest = EngineTest;

TEST_F(TableBuildTest, SetsPrecisionAndFloorByDepth) {
    const std::tuple<int32_t, uint32_t, int> cases[] = {{1, 16383, -5}, {2, 4095, 1}, {4, 2047, 99}};
    for (const auto &[bytes, floor, workers] : cases) { // any number of workers
        gPreciseMode = false;
        gFloor = 1;
        const TestImage image(kModeRgb8, bytes, 0, IntRect{0, 0, 4, 4});
        EXPECT_TRUE(Detect(image.buffer, workers).empty());
        EXPECT_TRUE(gPreciseMode);
        EXPECT_EQ(gFloor, floor);
    }
}

TEST_F(TableBuildTest, CancellingBetweenScanAndMergeSkipsTheMerge) {
    const TestImage image = MakeSpots(80, 80, {{40, 40, 3, 240}}, 5);
    TableBuild build;
    ResetTableBuild(&cancel, ImageLock{}, WorkerHooks{}, &build);
    ASSERT_EQ(PrepareTableBuild(image.buffer, 1, &build), kNoError);
    ScanBand(&build.workers[0]);
    EXPECT_GT(build.workers[0].table.Count, 0u);
    cancel = 1;
    EXPECT_EQ(MergeAndRank(build, cancel), kUserCanceledErr);
    build.workers[0].result = kMemFullErr; // met before the stop
    EXPECT_EQ(MergeAndRank(build, cancel), kMemFullErr);
    EXPECT_TRUE(GlobalSources().empty());
    ReleaseTableBuild(&build);
    ReleaseTableBuild(&build); // nothing left: harmless
}

} // namespace
