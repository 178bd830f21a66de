// Bands, contexts and whole builds: wild pictures, failing memory, cancelling.
#include "engine/TableBuild.h"

#include "diag/BufferUsage.h"
#include "engine/SerialBuild.h"
#include "engine/detect/BandScan.h"
#include "engine/image/FixedPoint.h"
#include "tests/engine/TestImages.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace {

TEST(Bands, LeaveOneRowBetweenThemAndEndAtTheBottom) {
    struct Case {
        int32_t top, bottom, workers;
        int32_t edges[8];
    };
    const Case cases[] = {{0, 100, 1, {0, 100}},
                          {10, 110, 2, {10, 60, 61, 110}},
                          {0, 103, 4, {0, 25, 26, 51, 52, 77, 78, 103}},
                          {5, 8, 4, {5, 5, 6, 6, 7, 7, 8, 8}},
                          {0, 1, 4, {0, 0, 1, 1, 2, 2, 3, 1}},
                          {0, 4, 4, {0, 1, 2, 3, 4, 5, 6, 4}}};
    for (const Case &c : cases) {
        IntRect bands[kMaxWorkers] = {};
        PlanBands(IntRect{-7, c.top, 9, c.bottom}, c.workers, bands);
        for (int32_t i = 0; i < c.workers; ++i) {
            EXPECT_EQ(bands[i].left, -7);
            EXPECT_EQ(bands[i].right, 9);
            EXPECT_EQ(bands[i].top, c.edges[2 * i]);
            EXPECT_EQ(bands[i].bottom, c.edges[2 * i + 1]);
        }
    }
}

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

// Spots of many sizes on noise, with a flat area: every part of the engine has work.
TestImage MakeBusyPicture(int32_t width, int32_t height) {
    std::vector<Spot> spots;
    for (int i = 0; i < 12; ++i)
        spots.push_back(
            {20.0 + 37 * i % (width - 40), 15.0 + 53 * i % (height - 30), 1.0 + i % 4, 150.0 + 8 * i});
    TestImage image = MakeSpots(width, height, spots, 12);
    for (int32_t y = height - 160; y < height; ++y)
        for (int32_t x = width - 160; x < width; ++x)
            for (int plane = 0; plane < 3; ++plane)
                image.buffer.planes[plane][y * width + x] = 250;
    return image;
}

TEST_F(TableBuildTest, SetsPrecisionAndFloorByDepth) {
    const std::pair<int32_t, uint32_t> cases[] = {{1, 16383}, {2, 4095}, {4, 2047}};
    for (const auto &[bytes, floor] : cases) {
        gPreciseMode = false;
        gFloor = 1;
        const TestImage image(kModeRgb8, bytes, 0, IntRect{0, 0, 4, 4});
        Detect(image.buffer);
        EXPECT_TRUE(gPreciseMode);
        EXPECT_EQ(gFloor, floor);
    }
}

TEST_F(TableBuildTest, WildPicturesOfEveryShapeEndWithoutASource) {
    const std::pair<int32_t, int32_t> sizes[] = {{1, 1}, {1, 5}, {5, 1},     {2, 2},
                                                 {3, 3}, {4, 4}, {32767, 3}, {3, 32767}};
    for (const auto &[width, height] : sizes)
        for (const uint8_t value : {0, 1, 255}) {
            const TestImage image = MakeGrayRgb(width, height, [value](int, int) { return value; });
            for (const int workers : {-5, 1, 4, 99})
                EXPECT_TRUE(Detect(image.buffer, workers).empty())
                    << width << 'x' << height << " of " << +value;
        }
}

TEST_F(TableBuildTest, WildFloatsAreHarmless) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const float wild[] = {std::nanf(""), -1e30f, kInfinity, 0.3f, -kInfinity, 1e-40f, 1.0f};
    TestImage image(kModeRgb32, 4, 1, IntRect{0, 0, 1300, 40});
    for (int64_t i = 0; i < image.buffer.planeSize * 4; ++i)
        memcpy(image.buffer.pixels + 4 * i, &wild[(i * i / 7) % 7], 4);
    Detect(image.buffer);
}

// Whatever allocation fails, the build says so, or the table is the right one; and no memory stays behind.
TEST_F(TableBuildTest, EveryFailingAllocationIsToldOrHarmless) {
    const TestImage image = MakeBusyPicture(240, 230);
    const std::vector<LightSource> good = Detect(image.buffer, 2);
    FreeTableRecords(gLightSourceTable);
    const int64_t pictureBytes = BufferBytesInUse();
    FailAllocation(0, false);
    Detect(image.buffer, 2);
    const int64_t allocations = AllocationsMade();
    int told = 0;
    for (const bool andAllLater : {false, true})
        for (int64_t n = 1; n <= allocations; n += n < 30 ? 1 : 17) {
            FailAllocation(n, andAllLater);
            const HostResult result = BuildLightSourceTable(image.buffer, 2, cancel);
            if (result == kNoError)
                EXPECT_TRUE(SameSources(good, GlobalSources())) << "allocation " << n;
            else
                EXPECT_TRUE(result == kMemFullErr || result == kParamErr) << result;
            told += result != kNoError;
            FreeTableRecords(gLightSourceTable);
            ASSERT_EQ(BufferBytesInUse(), pictureBytes) << "allocation " << n;
        }
    EXPECT_GE(told, 12);
    FailAllocation(0, false);
    EXPECT_TRUE(SameSources(good, Detect(image.buffer, 2)));
    cancel = 1;
    EXPECT_EQ(BuildLightSourceTable(image.buffer, 2, cancel), kUserCanceledErr);
    EXPECT_TRUE(GlobalSources().empty());
}

TEST_F(TableBuildTest, CancellingBetweenScanAndMergeSkipsTheMerge) {
    const TestImage image = MakeBusyPicture(240, 230);
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
