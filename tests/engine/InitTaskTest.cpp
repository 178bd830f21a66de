// The background task under its own name: runs, stops, failures of every system call it makes, and leaks.
#include "engine/InitializationTask.h"

#include "diag/BufferUsage.h"
#include "engine/SerialBuild.h"
#include "host/module/ModuleImports.h"
#include "tests/engine/TestImages.h"

#include <windows.h>

#include <process.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <set>

namespace {

// What the replaced system calls do and have seen.
struct SystemCalls {
    DWORD processors = 4;
    std::atomic<int> events, mutexes, threads; // calls so far
    int failEvent, failMutex, failThread;      // the n-th call fails; 0: none
    DWORD multipleWait;                        // what the wait for all workers says; 0: the truth
};
SystemCalls gCalls;

// Handles that the task has open. Not what the run-time library makes for itself: its events reset
// automatically.
std::set<HANDLE> gOpenHandles;
SRWLOCK gOpenHandlesLock = SRWLOCK_INIT;

size_t OpenHandles() {
    AcquireSRWLockShared(&gOpenHandlesLock);
    const size_t count = gOpenHandles.size();
    ReleaseSRWLockShared(&gOpenHandlesLock);
    return count;
}

HANDLE Opened(HANDLE handle) {
    AcquireSRWLockExclusive(&gOpenHandlesLock);
    if (handle)
        gOpenHandles.insert(handle);
    ReleaseSRWLockExclusive(&gOpenHandlesLock);
    return handle;
}

void Closing(HANDLE handle) {
    AcquireSRWLockExclusive(&gOpenHandlesLock);
    gOpenHandles.erase(handle);
    ReleaseSRWLockExclusive(&gOpenHandlesLock);
}

HANDLE WINAPI CountedCreateEvent(SECURITY_ATTRIBUTES *security, BOOL manual, BOOL initial, const char *name) {
    if (!manual)
        return CreateEventExA(security, name, initial ? CREATE_EVENT_INITIAL_SET : 0, EVENT_ALL_ACCESS);
    if (++gCalls.events == gCalls.failEvent) {
        SetLastError(ERROR_NO_SYSTEM_RESOURCES);
        return nullptr;
    }
    return Opened(CreateEventExA(
        security, name, (manual ? CREATE_EVENT_MANUAL_RESET : 0) | (initial ? CREATE_EVENT_INITIAL_SET : 0),
        EVENT_ALL_ACCESS));
}

HANDLE WINAPI CountedCreateMutex(SECURITY_ATTRIBUTES *security, BOOL, const char *name) {
    if (++gCalls.mutexes == gCalls.failMutex) {
        SetLastError(ERROR_NO_SYSTEM_RESOURCES);
        return nullptr;
    }
    return Opened(CreateMutexExA(security, name, 0, MUTEX_ALL_ACCESS));
}

using BeginThread = uintptr_t(__cdecl *)(void *, unsigned, unsigned(__stdcall *)(void *), void *, unsigned,
                                         unsigned *);
BeginThread gBeginThread;
unsigned gTaskStack;

uintptr_t __cdecl CountedBeginThread(void *security, unsigned stack, unsigned(__stdcall *body)(void *),
                                     void *argument, unsigned flags, unsigned *id) {
    const int call = ++gCalls.threads;
    if (call == 1)
        gTaskStack = stack;
    if (call == gCalls.failThread) {
        errno = EAGAIN;
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return 0;
    }
    const uintptr_t thread = gBeginThread(security, stack, body, argument, flags, id);
    Opened(reinterpret_cast<HANDLE>(thread));
    return thread;
}

using CloseHandleProc = BOOL(WINAPI *)(HANDLE);
CloseHandleProc gCloseHandle;
BOOL WINAPI CountedCloseHandle(HANDLE handle) {
    Closing(handle); // before the system can give its number away again
    const BOOL closed = gCloseHandle(handle);
    EXPECT_TRUE(closed) << "a handle was closed twice";
    return closed;
}

void WINAPI ForcedSystemInfo(SYSTEM_INFO *info) {
    *info = SYSTEM_INFO{};
    info->dwNumberOfProcessors = gCalls.processors;
}

using MultipleWait = DWORD(WINAPI *)(DWORD, const HANDLE *, BOOL, DWORD);
MultipleWait gMultipleWait;
DWORD WINAPI ForcedMultipleWait(DWORD count, const HANDLE *handles, BOOL all, DWORD timeout) {
    if (gCalls.multipleWait == 0)
        return gMultipleWait(count, handles, all, timeout);
    SetLastError(ERROR_INVALID_HANDLE);
    return gCalls.multipleWait;
}

struct InitTaskTest : EngineTest {
    void SetUp() override {
        EngineTest::SetUp();
        gCalls.processors = 4;
        gCalls.failEvent = gCalls.failMutex = gCalls.failThread = 0;
        gCalls.multipleWait = 0;
        HMODULE self = GetModuleHandleA(nullptr);
        ASSERT_NE(host::ReplaceImport(self, nullptr, "CreateEventA", CountedCreateEvent, &hooks), nullptr);
        ASSERT_NE(host::ReplaceImport(self, nullptr, "CreateMutexA", CountedCreateMutex, &hooks), nullptr);
        gBeginThread = host::ReplaceImport(self, nullptr, "_beginthreadex", CountedBeginThread, &hooks);
        gCloseHandle = host::ReplaceImport(self, nullptr, "CloseHandle", CountedCloseHandle, &hooks);
        gMultipleWait =
            host::ReplaceImport(self, nullptr, "WaitForMultipleObjects", ForcedMultipleWait, &hooks);
        ASSERT_NE(host::ReplaceImport(self, nullptr, "GetSystemInfo", ForcedSystemInfo, &hooks), nullptr);
        ASSERT_TRUE(gBeginThread && gCloseHandle && gMultipleWait);
        small.emplace(MakeGrayRgb(9, 9, [](int x, int y) { return static_cast<uint8_t>(10 * x + y); }));
        spots.emplace(MakeSpots(
            300, 240,
            {{50, 40, 2, 240}, {150, 90, 4, 200}, {250, 20, 3, 220}, {80, 170, 2, 240}, {210, 200, 5, 230}},
            10));
        Restart();
    }
    void TearDown() override {
        EXPECT_EQ(OpenHandles(), 0u);
        host::RestoreImports(&hooks);
        small.reset();
        spots.reset();
        EngineTest::TearDown();
    }
    // Counts calls from here on.
    static void Restart() { gCalls.events = gCalls.mutexes = gCalls.threads = 0; }
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
    // The one report that was made.
    static void ExpectReport(uint32_t site, uint32_t kind, const std::string &text) {
        const std::vector<RecordedReport> reports = TakeReports();
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].record.line, site);
        EXPECT_EQ(reports[0].record.kind, kind);
        EXPECT_EQ(reports[0].record.systemError != 0, kind == kSystemError);
        EXPECT_EQ(reports[0].title, "Debug:  Unexpected Error");
        EXPECT_EQ(reports[0].message, text);
    }

    host::ImportHooks hooks;
    std::optional<TestImage> small, spots;
};

TEST_F(InitTaskTest, FindsWhatASerialBuildFindsWithEveryNumberOfWorkers) {
    const std::pair<DWORD, int> cases[] = {{1, 1}, {2, 2}, {3, 1}, {4, 2}, {5, 3}, {16, 4}};
    for (const auto &[processors, workers] : cases) {
        gCalls.processors = processors;
        Restart();
        std::vector<LightSource> found;
        EXPECT_EQ(RunToTheEnd(spots->buffer, &found), kNoError);
        EXPECT_EQ(gCalls.threads, workers + 1);
        EXPECT_EQ(gTaskStack, 8192u);
        EXPECT_EQ(found.size(), 5u);
        EXPECT_TRUE(SameSources(found, Detect(spots->buffer, workers)));
        EXPECT_EQ(OpenHandles(), 0u);
    }
    EXPECT_TRUE(TakeReports().empty());
}

TEST_F(InitTaskTest, TellsItsProgressAndEndsItsThread) {
    uint32_t done = 77, total = 77;
    gCalls.processors = 1;
    StartLightSourceTableInit(spots->buffer);
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
    EXPECT_EQ(RunToTheEnd(spots->buffer), kNoError);
}

TEST_F(InitTaskTest, ASecondRunIsAsGoodAsTheFirstEvenWithoutAStop) {
    std::vector<LightSource> first, second;
    StartLightSourceTableInit(spots->buffer);
    RunToTheEnd(spots->buffer, &first);
    RunToTheEnd(spots->buffer, &second);
    EXPECT_EQ(first.size(), 5u);
    EXPECT_TRUE(SameSources(first, second));
}

TEST_F(InitTaskTest, StoppingDuringTheScanEndsItEarly) {
    const TestImage noise = MakeNoise(1200, 1200, 4);
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
        EXPECT_EQ(OpenHandles(), 0u);
    }
}

TEST_F(InitTaskTest, AStartThatFailsShowsInTheResultAndBlocksNobody) {
    struct Case {
        int SystemCalls::*fail;
        uint32_t site;
        const char *text;
    };
    const Case cases[] = {
        {&SystemCalls::failMutex, 212, "Could not create the analysis image mutex."},
        {&SystemCalls::failEvent, 206, "Could not create the data initialization complete event."},
        {&SystemCalls::failThread, 198, "Could not initiate light source table initialization"}};
    for (const Case &c : cases) {
        Restart();
        gCalls.*c.fail = 1;
        StartLightSourceTableInit(spots->buffer);
        EXPECT_EQ(LightSourceTableResult(), kErrMissingParameter);
        EXPECT_EQ(LightSourceTableThread(), nullptr);
        EXPECT_TRUE(WaitLightSourceTable(nullptr, nullptr, INFINITE));
        StopLightSourceTableInit();
        CloseLightSourceTableThread();
        EXPECT_EQ(OpenHandles(), 0u);
        ExpectReport(c.site, kSystemError, c.text);
        gCalls.*c.fail = 0;
        EXPECT_EQ(RunToTheEnd(spots->buffer), kNoError);
    }
}

TEST_F(InitTaskTest, AWorkersEventThatFailsEndsTheRun) {
    for (const int worker : {0, 1}) {
        Restart();
        gCalls.failEvent = 2 + worker;
        EXPECT_EQ(RunToTheEnd(spots->buffer), kErrMissingParameter);
        EXPECT_EQ(gCalls.threads, 1);
        EXPECT_EQ(OpenHandles(), 0u);
        ExpectReport(966, kSystemError, "Could not create AnalyzeSectionTask() termination event.");
    }
}

TEST_F(InitTaskTest, AWorkerThatDoesNotStartLeavesItsBandUnscanned) {
    std::vector<LightSource> found;
    gCalls.failThread = 2; // the upper of two bands
    EXPECT_EQ(RunToTheEnd(spots->buffer, &found), kNoError);
    ExpectReport(570, kDebugMessage,
                 std::string("Could not initiate AnalyzeSection() task : ") + strerror(EAGAIN));
    ASSERT_EQ(found.size(), 2u);
    for (const LightSource &s : found)
        EXPECT_GT(s.Y, 120);
}

TEST_F(InitTaskTest, AWaitThatGoesWrongIsToldAndStillWaitsForTheWorkers) {
    const TestImage noise = MakeNoise(1200, 1200, 4);
    struct Case {
        DWORD waited;
        uint32_t site, kind;
        const char *text;
    };
    const Case cases[] = {
        {WAIT_ABANDONED_0 + 1, 592, kDebugMessage, "An object was abandoned in InitializeDataTask()."},
        {WAIT_TIMEOUT, 597, kDebugMessage, "A wait timed out in InitializeDataTask()."},
        {WAIT_FAILED, 603, kSystemError, "Waiting for events failed in InitializeDataTask."}};
    for (const Case &c : cases) {
        gCalls.multipleWait = c.waited;
        std::vector<LightSource> found;
        EXPECT_EQ(RunToTheEnd(noise.buffer, &found), kErrMissingParameter);
        EXPECT_TRUE(found.empty());
        EXPECT_EQ(OpenHandles(), 0u);
        ExpectReport(c.site, c.kind, c.text);
    }
}

TEST_F(InitTaskTest, AFailingAllocationIsToldAndLosesNoMemory) {
    const int64_t pictures = BufferBytesInUse();
    const HostResult expected[] = {kMemFullErr, kParamErr,   kMemFullErr,
                                   kMemFullErr, kMemFullErr, kMemFullErr};
    for (int64_t n = 1; n <= 6; ++n) {
        FailAllocation(n, false);
        EXPECT_EQ(RunToTheEnd(spots->buffer), expected[n - 1]) << n;
        EXPECT_EQ(TakeReports().size(), n <= 2 ? 0u : 1u);
        EXPECT_EQ(BufferBytesInUse(), pictures);
        EXPECT_EQ(OpenHandles(), 0u);
    }
}

TEST_F(InitTaskTest, AThousandQuickRunsLeaveNothingOpen) {
    const int64_t pictures = BufferBytesInUse();
    for (int i = 0; i < 1000; ++i) {
        StartLightSourceTableInit(small->buffer);
        if (i % 2 == 0) {
            ASSERT_TRUE(WaitLightSourceTable(nullptr, nullptr, INFINITE));
        }
        if (i % 5 == 0)
            continue; // the next start does the cleaning
        StopLightSourceTableInit();
        CloseLightSourceTableThread();
        ASSERT_EQ(OpenHandles(), 0u) << "run " << i;
    }
    StopLightSourceTableInit();
    CloseLightSourceTableThread();
    EXPECT_EQ(BufferBytesInUse(), pictures);
    EXPECT_TRUE(TakeReports().empty());
}

} // namespace
