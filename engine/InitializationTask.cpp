#include "engine/InitializationTask.h"

#include "diag/ErrorReport.h"
#include "engine/SystemThreads.h"
#include "engine/TableBuild.h"
#include "engine/detect/BandScan.h"
#include "engine/table/LightSourceTable.h"

#include <windows.h>

#include <atomic>
#include <cerrno>
#include <cstring>

namespace {

constexpr uint32_t kSiteThread = 198, kSiteCompletionEvent = 206, kSiteMutex = 212, kSiteWorker = 570;
constexpr uint32_t kSiteAbandoned = 592, kSiteTimedOut = 597, kSiteWaitFailed = 603,
                   kSiteTerminationEvent = 966;

constexpr unsigned kTaskStackBytes = 8192;

// Made and closed on the host's thread, while neither the task nor a waiter runs. Read by any thread.
HANDLE gCompletionEvent; // manual-reset; set once, as the task's last act; the only publication of the table
HANDLE gImageMutex;      // guards writes to the analysis image
void *gThread;           // the task's thread

// Set by the host's thread, polled by the task and its workers; only ever from 0 to 1 during a run.
std::atomic<uint8_t> gCancel;      // stops the workers and the task
std::atomic<uint8_t> gTableCancel; // stops merging and ranking

std::atomic<HostResult>
    gResult;        // written by the host's thread before the task starts, then by the task on failure
ImageBuffer gImage; // as gResult; borrowed from the caller of StartLightSourceTableInit
TableBuild gBuild;  // the task's; its row counters are read by any thread

void ReportUnexpected(uint32_t site, const char *text) {
    ReportError({site, kDebugMessage, 0}, kStopIcon, kTitleUnexpected, "%s", text);
}

void ReportSystemError(uint32_t site, const char *text) {
    ReportError({site, kSystemError, GetLastError()}, kStopIcon, kTitleUnexpected, "%s", text);
}

void CloseAndForget(HANDLE *handle) {
    if (*handle)
        CloseHandle(*handle);
    *handle = nullptr;
}

void LockImage(void *) {
    WaitForSingleObject(gImageMutex, INFINITE);
}
void UnlockImage(void *) {
    ReleaseMutex(gImageMutex);
}

HostResult CreateTerminationEvent(WorkerContext *worker) {
    worker->terminationEvent = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    if (worker->terminationEvent)
        return kNoError;
    ReportSystemError(kSiteTerminationEvent, "Could not create AnalyzeSectionTask() termination event.");
    return kErrMissingParameter;
}

void CloseTerminationEvent(WorkerContext *worker) {
    CloseAndForget(&worker->terminationEvent);
}

// One worker of the run. It stays where it is until its thread has been joined.
struct BandThread {
    WorkerTask task;
    void *thread; // null when none was to be had
};

void AnalyzeSection(void *argument) {
    auto *worker = static_cast<WorkerContext *>(argument);
    ScanBandAhead(worker);
    SetEvent(worker->terminationEvent);
}

void StartWorkers(BandThread *bands) {
    for (int32_t i = 0; i < gBuild.workerCount; ++i) {
        WorkerContext *worker = &gBuild.workers[i];
        bands[i].task = {AnalyzeSection, worker};
        bands[i].thread = StartSystemThread(&bands[i].task, 0);
        if (bands[i].thread)
            continue;
        ReportError({kSiteWorker, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "Could not initiate AnalyzeSection() task : %s", strerror(errno));
        SetEvent(worker->terminationEvent); // or the wait for all workers would never end
    }
}

HostResult WaitForTerminationEvents() {
    HANDLE events[kMaxWorkers];
    const auto count = static_cast<DWORD>(gBuild.workerCount);
    for (DWORD i = 0; i < count; ++i)
        events[i] = gBuild.workers[i].terminationEvent;
    const DWORD waited = WaitForMultipleObjects(count, events, TRUE, INFINITE);
    if (waited < WAIT_OBJECT_0 + count)
        return kNoError;
    if (waited >= WAIT_ABANDONED_0 && waited < WAIT_ABANDONED_0 + count)
        ReportUnexpected(kSiteAbandoned, "An object was abandoned in InitializeDataTask().");
    else if (waited == WAIT_TIMEOUT)
        ReportUnexpected(kSiteTimedOut, "A wait timed out in InitializeDataTask().");
    else
        ReportSystemError(kSiteWaitFailed, "Waiting for events failed in InitializeDataTask.");
    return kErrMissingParameter;
}

// Returns only when no worker thread runs any more, whatever the wait for their events said: the contexts are
// freed next, and the module may be unloaded soon after.
HostResult RunWorkers() {
    BandThread bands[kMaxWorkers] = {};
    StartWorkers(bands);
    const HostResult result = WaitForTerminationEvents();
    if (result != kNoError)
        gCancel = 1;
    for (const BandThread &band : bands)
        if (band.thread)
            JoinSystemThread(band.thread);
    if (result == kNoError)
        SettleBands(&gBuild.shared);
    return result;
}

int32_t WorkerCount() {
    return WorkerCountForProcessors(static_cast<uint32_t>(ProcessorCount()));
}

HostResult BuildTable() {
    HostResult result = PrepareTableBuild(gImage, WorkerCount(), &gBuild);
    if (result == kNoError)
        result = RunWorkers();
    if (result == kNoError)
        result = MergeAndRank(gBuild, gTableCancel);
    ReleaseTableBuild(&gBuild);
    return result;
}

void InitializeDataTask(void *) {
    const HostResult result = BuildTable();
    // Stopping is no failure: who stops the task wants no table.
    if (result != kNoError && result != kUserCanceledErr)
        gResult = result;
    SetEvent(gCompletionEvent);
}

constexpr WorkerTask kTask = {InitializeDataTask, nullptr};

bool CreateTaskObjects() {
    gImageMutex = CreateMutexA(nullptr, FALSE, nullptr);
    if (!gImageMutex) {
        ReportSystemError(kSiteMutex, "Could not create the analysis image mutex.");
        return false;
    }
    gCompletionEvent = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    if (!gCompletionEvent)
        ReportSystemError(kSiteCompletionEvent, "Could not create the data initialization complete event.");
    return gCompletionEvent != nullptr;
}

bool StartTask() {
    gThread = StartSystemThread(&kTask, kTaskStackBytes);
    if (gThread)
        return true;
    ReportSystemError(kSiteThread, "Could not initiate light source table initialization");
    CloseAndForget(&gCompletionEvent);
    return false;
}

} // namespace

void StartLightSourceTableInit(const ImageBuffer &image) {
    StopLightSourceTableInit();
    CloseLightSourceTableThread();
    gCancel = 0;
    gTableCancel = 0;
    gResult = kNoError;
    gImage = image;
    ResetTableBuild(&gCancel, ImageLock{LockImage, UnlockImage, nullptr},
                    WorkerHooks{CreateTerminationEvent, CloseTerminationEvent, SystemThreads(WorkerCount())},
                    &gBuild);
    if (!CreateTaskObjects() || !StartTask())
        gResult = kErrMissingParameter;
}

bool WaitLightSourceTable(uint32_t *rowsDone, uint32_t *rowsTotal, uint32_t timeoutMs) {
    // No event: nothing will ever come. A wait that fails would fail for ever.
    const bool isDone = !gCompletionEvent || WaitForSingleObject(gCompletionEvent, timeoutMs) != WAIT_TIMEOUT;
    if (rowsDone)
        *rowsDone = gBuild.shared.rowsDone;
    if (rowsTotal)
        *rowsTotal = gBuild.shared.rowsTotal;
    return isDone;
}

void CancelLightSourceTableInit() {
    gCancel = 1;
    gTableCancel = 1;
}

void StopLightSourceTableInit() {
    CancelLightSourceTableInit();
    if (gCompletionEvent)
        WaitForSingleObject(gCompletionEvent, INFINITE);
    CloseAndForget(&gCompletionEvent);
    FreeTableRecords(gLightSourceTable);
    CloseAndForget(&gImageMutex);
}

HostResult LightSourceTableResult() {
    return gResult;
}

void *LightSourceTableThread() {
    return gThread;
}

void CloseLightSourceTableThread() {
    if (gThread)
        JoinSystemThread(gThread);
    gThread = nullptr;
}
