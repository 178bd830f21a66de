// Bands, contexts and whole builds: wild pictures, failing memory, cancelling.
#include "engine/TableBuild.h"

#include "diag/BufferUsage.h"
#include "engine/FixedPoint.h"
#include "engine/SerialBuild.h"
#include "tests/engine/TestWorker.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace {

TEST(Bands, WorkerCountLeavesTwoProcessorsFree) {
    const std::pair<uint32_t, int32_t> cases[] = {{0, 1}, {1, 1}, {2, 2}, {3, 1},
                                                  {4, 2}, {5, 3}, {6, 4}, {64, 4}};
    for (const auto &[processors, workers] : cases)
        EXPECT_EQ(WorkerCountForProcessors(processors), workers);
}

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

TEST_F(WorkerContextTest, HoldsEveryRadiusAndGivesAllMemoryBack) {
    const TestImage image = MakeNoise(20, 20, 1);
    TestWorker worker(image.buffer);
    const WorkerContext &w = worker.context;
    EXPECT_EQ(w.diskParamsBytes, 1536u);
    EXPECT_EQ(w.ringShapeBytes, 251904u);
    EXPECT_EQ(w.diskCount, 384);
    EXPECT_EQ(w.ringCount, 384);
    for (int32_t i = 0; i < 384; ++i) {
        ASSERT_EQ(*w.disks[i].radius, i / 4.0f);
        ASSERT_EQ(*w.rings[i].radius, i / 4.0f);
        ASSERT_EQ(w.disks[i].sample, SampleDisk);
        ASSERT_EQ(w.rings[i].sample, SampleRing);
    }
    EXPECT_NE(w.spare, nullptr);
}

TEST_F(WorkerContextTest, EveryMissingBufferIsReportedAndTheNextStillTried) {
    const char *names[] = {"DiskParamsBuff", "RingParamsBuff", "DiskShapeBuff", "RingShapeBuff"};
    const uint32_t sites[] = {901, 907, 918, 930};
    DetectionShared shared{};
    shared.image.bounds = IntRect{0, 0, 10, 10};
    for (const bool all : {false, true})
        for (int64_t failing = 1; failing <= 4; ++failing) {
            WorkerContext worker;
            FailAllocation(failing, all);
            EXPECT_EQ(InitializeWorkerContext(3, shared.image.bounds, &shared, &worker), kMemFullErr);
            FailAllocation(0, false);
            const std::vector<RecordedReport> reports = TakeReports();
            ASSERT_EQ(reports.size(), all ? static_cast<size_t>(5 - failing) : 1u);
            for (size_t i = 0; i < reports.size(); ++i) {
                const size_t buffer = static_cast<size_t>(failing) - 1 + i;
                EXPECT_EQ(reports[i].record.line, sites[buffer]);
                EXPECT_EQ(reports[i].record.kind, kDebugMessage);
                EXPECT_EQ(reports[i].title, "Debug:  Unexpected Error");
                EXPECT_EQ(reports[i].message,
                          std::string("Thread 3: Could not allocate buffer for ") + names[buffer] + ".");
            }
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
                SetSample8(&image.buffer, plane, x, y, 250);
    return image;
}

TEST_F(TableBuildTest, SetsPrecisionAndFloorByDepth) {
    const std::pair<int32_t, uint32_t> cases[] = {{1, 16383}, {2, 4095}, {4, 2047}};
    for (const auto &[bytes, floor] : cases) {
        gPreciseMode = false;
        gFloor = 1;
        const TestImage image(kModeRgb8, bytes, 0, IntRect{0, 0, 4, 4}, false);
        Detect(image.buffer);
        EXPECT_TRUE(gPreciseMode);
        EXPECT_EQ(gFloor, floor);
    }
}

TEST_F(TableBuildTest, ASecondBuildGivesTheSameTable) {
    const TestImage image = MakeBusyPicture(300, 260);
    for (const int workers : {1, 3, 4}) {
        const std::vector<LightSource> first = Detect(image.buffer, workers);
        EXPECT_GE(first.size(), 5u);
        EXPECT_TRUE(SameSources(first, Detect(image.buffer, workers)));
    }
    EXPECT_EQ(Detect(image.buffer, 1).size(), Detect(image.buffer, -5).size());
    EXPECT_EQ(Detect(image.buffer, 4).size(), Detect(image.buffer, 99).size());
}

TEST_F(TableBuildTest, RowsDoneCountsEveryScannedRow) {
    const TestImage image = MakeNoise(30, 103, 2);
    TableBuild build;
    ResetTableBuild(&cancel, ImageLock{}, WorkerHooks{}, &build);
    ASSERT_EQ(PrepareTableBuild(image.buffer, 4, &build), kNoError);
    EXPECT_EQ(build.shared.rowsTotal, 103u);
    for (int32_t i = 0; i < build.workerCount; ++i)
        ScanBand(&build.workers[i]);
    EXPECT_EQ(build.shared.rowsDone, 100u); // three rows lie between bands
    ReleaseTableBuild(&build);
    ReleaseTableBuild(&build); // nothing left: harmless
}

TEST_F(TableBuildTest, WildPicturesOfEveryShapeEndWithoutASource) {
    const std::pair<int32_t, int32_t> sizes[] = {{1, 1}, {1, 5}, {5, 1},     {2, 2},
                                                 {3, 3}, {4, 4}, {32767, 3}, {3, 32767}};
    for (const auto &[width, height] : sizes)
        for (const uint8_t value : {0, 1, 255}) {
            const TestImage image = MakeGrayRgb(width, height, [value](int, int) { return value; });
            for (const int workers : {1, 4})
                EXPECT_TRUE(Detect(image.buffer, workers).empty())
                    << width << 'x' << height << " of " << +value;
        }
}

TEST_F(TableBuildTest, WildFloatsAreHarmless) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const float wild[] = {std::nanf(""), -1e30f, kInfinity, 0.3f, -kInfinity, 1e-40f, 1.0f};
    TestImage image(kModeRgb32, 4, 1, IntRect{0, 0, 1300, 40}, false);
    for (int64_t i = 0; i < image.buffer.planeSize * 4; ++i)
        memcpy(image.buffer.pixels + 4 * i, &wild[(i * i / 7) % 7], 4);
    Detect(image.buffer);
}

TEST_F(TableBuildTest, ThousandsOfSourcesKeepTheirPlaces) {
    const TestImage image = MakeGrayRgb(800, 800, [](int x, int y) {
        return static_cast<uint8_t>(std::hypot(x % 10 - 5, y % 10 - 5) < 1.5 ? 250 : 10);
    });
    const std::vector<LightSource> found = Detect(image.buffer);
    EXPECT_GE(found.size(), 6000u);
    EXPECT_LE(found.size(), 6400u);
    for (const LightSource &s : found) {
        ASSERT_LE(std::abs(s.X % 10 - 5), 1);
        ASSERT_LE(std::abs(s.Y % 10 - 5), 1);
    }
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
}

TEST_F(TableBuildTest, ACancelledBuildLeavesNothingBehind) {
    const TestImage image = MakeBusyPicture(240, 230);
    cancel = 1;
    EXPECT_EQ(BuildLightSourceTable(image.buffer, 2, cancel), kUserCanceledErr);
    EXPECT_TRUE(GlobalSources().empty());
    cancel = 0;
    EXPECT_EQ(BuildLightSourceTable(image.buffer, 2, cancel), kNoError);
    EXPECT_FALSE(GlobalSources().empty());
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
    EXPECT_TRUE(GlobalSources().empty());
    ReleaseTableBuild(&build);
}

struct HookCount {
    static inline int created, released, failAt;
    static HostResult Create(WorkerContext *) {
        return ++created == failAt ? kErrMissingParameter : kNoError;
    }
    static void Release(WorkerContext *) { ++released; }
};

TEST_F(TableBuildTest, TheFirstContextThatFailsEndsThePreparation) {
    const TestImage image = MakeNoise(40, 40, 3);
    TableBuild build;
    HookCount::created = HookCount::released = 0;
    HookCount::failAt = 2;
    ResetTableBuild(&cancel, ImageLock{}, WorkerHooks{HookCount::Create, HookCount::Release}, &build);
    EXPECT_EQ(PrepareTableBuild(image.buffer, 4, &build), kErrMissingParameter);
    EXPECT_EQ(HookCount::created, 2);
    EXPECT_EQ(build.workers[2].DiskParamsBuff, nullptr);
    ReleaseTableBuild(&build);
    EXPECT_EQ(HookCount::released, kMaxWorkers);
}

} // namespace
