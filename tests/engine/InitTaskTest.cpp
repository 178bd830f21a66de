// The background task under its own name: runs, stops, failures of every system call it makes, and leaks.
#include "engine/InitializationTask.h"

#include "diag/BufferUsage.h"
#include "engine/SerialBuild.h"
#include "tests/engine/TestImages.h"
#include "tests/support/SystemObjects.h"

#include <windows.h>

#include <process.h>

#include <cerrno>
#include <cstring>

namespace {

DWORD gProcessors;
std::atomic<int> gThreads;
unsigned gTaskStack;

decltype(&_beginthreadex) gBeginThread;
uintptr_t __cdecl WatchedBeginThread(void *security, unsigned stack, unsigned(__stdcall *body)(void *),
                                     void *argument, unsigned flags, unsigned *id) {
    if (++gThreads == 1)
        gTaskStack = stack;
    const uintptr_t thread = gBeginThread(security, stack, body, argument, flags, id);
    if (!thread)
        errno = EAGAIN;
    return thread;
}

void WINAPI ForcedSystemInfo(SYSTEM_INFO *info) {
    *info = SYSTEM_INFO{};
    info->dwNumberOfProcessors = gProcessors;
}

decltype(&WaitForMultipleObjects) gRealWait;
DWORD gWaitAnswer; // instead of a wait for all workers; 0: wait
DWORD WINAPI AnsweredWait(DWORD count, const HANDLE *handles, BOOL all, DWORD milliseconds) {
    return gWaitAnswer ? gWaitAnswer : gRealWait(count, handles, all, milliseconds);
}

struct InitTaskTest : EngineTest {
    void SetUp() override {
        EngineTest::SetUp();
        gProcessors = 4;
        HMODULE self = GetModuleHandleA(nullptr);
        CountSystemObjects(self, &hooks);
        gBeginThread = host::ReplaceImport(self, "_beginthreadex", WatchedBeginThread, &hooks);
        ASSERT_NE(gBeginThread, nullptr);
        ASSERT_NE(host::ReplaceImport(self, "GetSystemInfo", ForcedSystemInfo, &hooks), nullptr);
        gRealWait = host::ReplaceImport(self, "WaitForMultipleObjects", AnsweredWait, &hooks);
    }
    void TearDown() override {
        ExpectNothingOpen();
        host::RestoreImports(&hooks);
        EngineTest::TearDown();
    }
    static void ExpectNothingOpen() { EXPECT_EQ(LiveObjects(), (std::map<std::string, int>{})); }
    static HostResult RunToTheEnd(const ImageBuffer &image, std::vector<LightSource> *found = nullptr) {
        StartLightSourceTableInit(image);
        EXPECT_TRUE(WaitLightSourceTable(nullptr, nullptr, INFINITE));
        const HostResult result = LightSourceTableResult();
        if (found)
            *found = GlobalSources();
        StopLightSourceTableInit();
        CloseLightSourceTableThread();
        EXPECT_EQ(LightSourceTableResult(), result);
        return result;
    }
    // The one report that was made: "site kind 16 title: text".
    static void ExpectReport(const std::string &report) {
        EXPECT_EQ(TakeReportLines(), std::vector<std::string>{report});
    }

    host::ImportHooks hooks;
    const TestImage small = MakeGrayRgb(9, 9, [](int x, int y) { return static_cast<uint8_t>(10 * x + y); });
    const TestImage spots = MakeSpots(
        300, 240,
        {{50, 40, 2, 240}, {150, 90, 4, 200}, {250, 20, 3, 220}, {80, 170, 2, 240}, {210, 200, 5, 230}}, 10);
};

TestImage MakeNoise() {
    TestImage noise(kModeGray8, 1, 0, {0, 0, 1300, 1300}); // which is reduced
    noise.FillRandom(4);
    return noise;
}

TEST_F(InitTaskTest, FindsWhatASerialBuildFindsWithEveryNumberOfWorkers) {
    const std::pair<DWORD, int> cases[] = {{1, 1}, {2, 2}, {3, 1}, {4, 2}, {5, 3}, {16, 4}};
    for (const auto &[processors, workers] : cases) {
        gProcessors = processors;
        gThreads = 0;
        std::vector<LightSource> found;
        EXPECT_EQ(RunToTheEnd(spots.buffer, &found), kNoError);
        EXPECT_EQ(gThreads, workers + 1);
        EXPECT_EQ(gTaskStack, 8192u);
        EXPECT_EQ(found.size(), 5u);
        EXPECT_TRUE(SameSources(found, Detect(spots.buffer, workers)));
        ExpectNothingOpen();
    }
    EXPECT_TRUE(TakeReports().empty());
}

TEST_F(InitTaskTest, TellsItsProgressAndEndsItsThread) {
    uint32_t done = 77, total = 77;
    gProcessors = 1;
    StartLightSourceTableInit(spots.buffer);
    while (!WaitLightSourceTable(&done, &total, 1))
        EXPECT_LE(done, total);
    EXPECT_EQ(done, 240u);
    EXPECT_EQ(total, 240u);
    ASSERT_NE(LightSourceTableThread(), nullptr);
    EXPECT_EQ(WaitForSingleObject(LightSourceTableThread(), 20000), WAIT_OBJECT_0);
    EXPECT_EQ(GlobalSources().size(), 5u);
    StopLightSourceTableInit();
    EXPECT_TRUE(GlobalSources().empty());
    CloseLightSourceTableThread();
    EXPECT_EQ(LightSourceTableThread(), nullptr);
}

TEST_F(InitTaskTest, EveryCallIsHarmlessWithoutARunAndAnImpossiblePictureIsAnError) {
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(WaitLightSourceTable(nullptr, nullptr, INFINITE));
        StopLightSourceTableInit();
        CloseLightSourceTableThread();
    }
    EXPECT_EQ(RunToTheEnd(ImageBuffer{}), kParamErr);
    EXPECT_TRUE(TakeReports().empty());
    EXPECT_EQ(RunToTheEnd(spots.buffer), kNoError);
}

TEST_F(InitTaskTest, StoppingDuringTheScanEndsItEarly) {
    const TestImage noise = MakeNoise();
    for (const bool onceScanning : {true, false}) {
        uint32_t done = 0, total = 0;
        StartLightSourceTableInit(noise.buffer);
        while (onceScanning && done == 0)
            ASSERT_FALSE(WaitLightSourceTable(&done, nullptr, 1)) << "the scan was over too soon";
        StopLightSourceTableInit();
        EXPECT_TRUE(WaitLightSourceTable(&done, &total, INFINITE));
        EXPECT_LT(done, 1190u);
        EXPECT_EQ(LightSourceTableResult(), kNoError);
        EXPECT_TRUE(GlobalSources().empty());
        CloseLightSourceTableThread();
        ExpectNothingOpen();
    }
}

TEST_F(InitTaskTest, AStartThatFailsShowsInTheResultAndBlocksNobody) {
    const std::pair<const char *, const char *> cases[] = {
        {"CreateMutexA", "212 2 16 Debug:  Unexpected Error: Could not create the analysis image mutex."},
        {"CreateEventA",
         "206 2 16 Debug:  Unexpected Error: Could not create the data initialization complete "
         "event."},
        {"_beginthreadex", "198 2 16 Debug:  Unexpected Error: Could not initiate light source table "
                           "initialization"}};
    for (const auto &[call, report] : cases) {
        FailSystemCall(call, 1, ERROR_NO_SYSTEM_RESOURCES);
        StartLightSourceTableInit(spots.buffer);
        EXPECT_EQ(LightSourceTableResult(), kErrMissingParameter);
        EXPECT_EQ(LightSourceTableThread(), nullptr);
        EXPECT_TRUE(WaitLightSourceTable(nullptr, nullptr, INFINITE));
        StopLightSourceTableInit();
        CloseLightSourceTableThread();
        ExpectNothingOpen();
        ExpectReport(report);
        EXPECT_EQ(RunToTheEnd(spots.buffer), kNoError);
    }
}

TEST_F(InitTaskTest, AWorkersEventThatFailsEndsTheRun) {
    for (const int worker : {0, 1}) {
        gThreads = 0;
        FailSystemCall("CreateEventA", 2 + worker, ERROR_NO_SYSTEM_RESOURCES);
        EXPECT_EQ(RunToTheEnd(spots.buffer), kErrMissingParameter);
        EXPECT_EQ(gThreads, 1);
        ExpectNothingOpen();
        ExpectReport("966 2 16 Debug:  Unexpected Error: Could not create AnalyzeSectionTask() termination "
                     "event.");
    }
}

TEST_F(InitTaskTest, AWorkerThatDoesNotStartLeavesItsBandUnscanned) {
    std::vector<LightSource> found;
    FailSystemCall("_beginthreadex", 2, ERROR_NOT_ENOUGH_MEMORY); // the upper of two bands
    EXPECT_EQ(RunToTheEnd(spots.buffer, &found), kNoError);
    ExpectReport(
        std::string("570 0 16 Debug:  Unexpected Error: Could not initiate AnalyzeSection() task : ") +
        strerror(EAGAIN));
    ASSERT_EQ(found.size(), 2u);
    for (const LightSource &s : found)
        EXPECT_GT(s.Y, 120);
}

TEST_F(InitTaskTest, AWaitForTheWorkersThatGoesWrongIsToldAndStillLeavesNoneRunning) {
    const std::string title = " 16 Debug:  Unexpected Error: ";
    for (const auto &[answer, report] :
         {std::pair(WAIT_ABANDONED_0, "592 0" + title + "An object was abandoned in InitializeDataTask()."),
          {WAIT_ABANDONED_0 + 1, "592 0" + title + "An object was abandoned in InitializeDataTask()."},
          {WAIT_ABANDONED_0 + 2, "603 2" + title + "Waiting for events failed in InitializeDataTask."},
          {WAIT_TIMEOUT, "597 0" + title + "A wait timed out in InitializeDataTask()."}}) {
        gWaitAnswer = answer;
        EXPECT_EQ(RunToTheEnd(spots.buffer), kErrMissingParameter);
        ExpectReport(report);
        ExpectNothingOpen();
    }
    gWaitAnswer = 0;
}

TEST_F(InitTaskTest, AFailingAllocationIsToldAndLosesNoMemory) {
    const int64_t pictures = BufferBytesInUse();
    const HostResult expected[] = {kMemFullErr, kParamErr,   kMemFullErr,
                                   kMemFullErr, kMemFullErr, kMemFullErr};
    for (int64_t n = 1; n <= 6; ++n) {
        FailAllocation(n, false);
        EXPECT_EQ(RunToTheEnd(spots.buffer), expected[n - 1]) << n;
        EXPECT_EQ(TakeReports().size(), n <= 2 ? 0u : 1u);
        EXPECT_EQ(BufferBytesInUse(), pictures);
        ExpectNothingOpen();
    }
}

TEST_F(InitTaskTest, AThousandQuickRunsLeaveNothingOpen) {
    const int64_t pictures = BufferBytesInUse();
    for (int i = 0; i < 1000; ++i) {
        StartLightSourceTableInit(small.buffer);
        if (i % 2 == 0)
            WaitLightSourceTable(nullptr, nullptr, INFINITE);
        if (i % 5 == 0)
            continue; // the next start does the cleaning
        StopLightSourceTableInit();
        CloseLightSourceTableThread();
        ExpectNothingOpen();
    }
    StopLightSourceTableInit();
    CloseLightSourceTableThread();
    EXPECT_EQ(BufferBytesInUse(), pictures);
    EXPECT_TRUE(TakeReports().empty());
}

} // namespace
