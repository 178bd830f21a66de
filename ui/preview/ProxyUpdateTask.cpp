#include "ui/preview/ProxyUpdateTask.h"

#include "diag/ErrorReport.h"
#include "engine/InitializationTask.h"
#include "engine/image/FixedPoint.h"
#include "ui/pixels/TypePictures.h"
#include "ui/preview/PreviewDraft.h"
#include "ui/preview/PreviewProxies.h"
#include "ui/preview/ProxyUpdateLoop.h"
#include "ui/preview/ProxyUpdateState.h"
#include "ui/window/DialogMessages.h"

#include <process.h>

namespace {

constexpr uint32_t kSiteParametersEvent = 344, kSiteTerminateEvent = 350, kSiteExitEvent = 356,
                   kSiteMutex = 362, kSiteThread = 475;

constexpr DWORD kTableWaitSlice = 50;              // milliseconds
constexpr uint32_t kLongestDraft = 200;            // milliseconds
constexpr double kUsualNanosecondsPerPixel = 15.0; // until a view has been measured

void ReportSystemError(uint32_t site, const char *text) {
    ReportError({site, kSystemError, GetLastError()}, kStopIcon, kTitleUnexpected, "%s", text);
}

HANDLE CreateTaskEvent(BOOL manualReset, uint32_t site, const char *failure) {
    const HANDLE event = CreateEventA(nullptr, manualReset, FALSE, nullptr);
    if (!event)
        ReportSystemError(site, failure);
    return event;
}

void CreateTaskObjects() {
    gProxyUpdate.ParametersAvailableEvent =
        CreateTaskEvent(FALSE, kSiteParametersEvent, "Could not create ParametersAvailableEvent.");
    gProxyUpdate.ProxyUpdateTerminateEvent =
        CreateTaskEvent(TRUE, kSiteTerminateEvent, "Could not create ProxyUpdateTerminateEvent.");
    gProxyUpdate.ProxyUpdateTaskExitEvent =
        CreateTaskEvent(TRUE, kSiteExitEvent, "Could not create ProxyUpdateTaskExitEvent.");
    gProxyUpdate.NewRenderingParametersMutex = CreateMutexA(nullptr, FALSE, nullptr);
    if (!gProxyUpdate.NewRenderingParametersMutex)
        ReportSystemError(kSiteMutex, "Could not create NewRenderingParametersMutex.");
}

void CloseAndForget(HANDLE *handle) {
    if (*handle)
        CloseHandle(*handle);
    *handle = nullptr;
}

// An event that is missing counts as set: nothing could ever set it.
bool MustTerminate() {
    return WaitForSingleObject(gProxyUpdate.ProxyUpdateTerminateEvent, 0) != WAIT_TIMEOUT;
}

// The picture is shown while the table is still being built.
void ShowOriginal(uint32_t *requestsSeen) {
    if (!LockRequests())
        return;
    const uint32_t requests = gProxyUpdate.requests;
    UnlockRequests();
    if (requests == *requestsSeen || !TakeRequest())
        return;
    *requestsSeen = requests;
    ServeOriginal();
}

// False when the task must end first.
bool WaitForLightSources() {
    uint32_t done = 0, total = 0, requestsSeen = 0;
    for (;;) {
        const bool isComplete = WaitLightSourceTable(&done, &total, kTableWaitSlice);
        if (MustTerminate())
            return false;
        if (isComplete)
            return true;
        PostMessageA(gProxyUpdate.dialog, kMsgProgress, done, static_cast<LPARAM>(total));
        ShowOriginal(&requestsSeen);
    }
}

// The renderer's mode is set only now: while the table is being built it belongs to the detection.
void BeginPreviewRendering() {
    UseFastMode();
    DrawTypePictures();
    PostMessageA(gProxyUpdate.dialog, kMsgTableReady, 0, 0);
}

unsigned __stdcall UpdateProxies(void *) {
    if (WaitForLightSources()) {
        BeginPreviewRendering();
        while (WaitForParameters()) {
            ServeRequest();
            gProxyUpdate.cancel.task = 0;
        }
    }
    if (gProxyUpdate.ProxyUpdateTaskExitEvent)
        SetEvent(gProxyUpdate.ProxyUpdateTaskExitEvent);
    return 0;
}

// What Start makes, in whatever state it is; no task runs.
void ReleaseEverything() {
    CloseAndForget(&gProxyUpdate.thread);
    CloseAndForget(&gProxyUpdate.ParametersAvailableEvent);
    CloseAndForget(&gProxyUpdate.ProxyUpdateTerminateEvent);
    CloseAndForget(&gProxyUpdate.ProxyUpdateTaskExitEvent);
    DeletePreviewRegions();
    DeleteTileBitmap(&gProxies.tileBitmap);
    CloseAndForget(&gProxyUpdate.NewRenderingParametersMutex);
    FreePreviewImages();
}

void ResetTask(HWND display, HWND dialog) {
    gProxyUpdate.display = display;
    gProxyUpdate.dialog = dialog;
    gProxyUpdate.staging = gProxyUpdate.shared = gProxyUpdate.working = PreviewRequest{};
    gProxyUpdate.inWork = PreviewRequest{};
    gProxyUpdate.requests = gProxyUpdate.requestsTaken = 0;
    gProxyUpdate.requestsServed = 0;
    gProxyUpdate.tileInWork = IntRect{};
    gProxyUpdate.stopDraft = 0;
    gProxyUpdate.draftStartTime = 0;
    gProxyUpdate.isViewUnfinished = false;
    gProxyUpdate.nanosecondsPerPixel = kUsualNanosecondsPerPixel;
    gProxies.draftQuality = kFirstDraft;
    gProxyUpdate.isStopping = false;
    gProxyUpdate.flushedZoom = 0.0;
    gProxyUpdate.flushedView = IntRect{};
    RaiseCancelFlags(0);
}

// The next one is coarser, and will be quicker than the rest of this one.
void StopLongDraft() {
    const uint32_t start = gProxyUpdate.draftStartTime;
    if (start != 0 && GetTickCount() - start > kLongestDraft)
        gProxyUpdate.stopDraft = 1;
}

bool StartThread() {
    gProxyUpdate.thread =
        reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, UpdateProxies, nullptr, 0, nullptr));
    if (!gProxyUpdate.thread)
        ReportSystemError(kSiteThread, "Could not start Proxy Update Task.");
    return gProxyUpdate.thread != nullptr;
}

} // namespace

bool StartProxyUpdateTask(HWND display, const PreviewSource &source) {
    StopProxyUpdateTask();
    if (!display || !PreparePreviewImages(*source.image))
        return false;
    ResetTask(display, source.dialog);
    CreateTaskObjects();
    CreatePreviewProxies();
    CreateTileBitmap(display, source.iccProfile, source.iccProfileBytes, &gProxies.tileBitmap);
    if (StartThread())
        return true;
    ReleaseEverything();
    return false;
}

void RequestPreview(const PreviewRequest &request) {
    gProxyUpdate.staging = request;
    gProxyUpdate.staging.tilesDone = 0;
    gProxyUpdate.staging.requestTime = GetTickCount();
    if (!LockRequests())
        return;
    CancelForRequest(gProxyUpdate.staging);
    StopLongDraft();
    gProxyUpdate.shared = gProxyUpdate.staging;
    ++gProxyUpdate.requests;
    UnlockRequests();
    if (gProxyUpdate.ParametersAvailableEvent)
        SetEvent(gProxyUpdate.ParametersAvailableEvent);
}

bool IsPreviewInWork() {
    return gProxyUpdate.thread && gProxyUpdate.requests != gProxyUpdate.requestsServed;
}

void StopProxyUpdateTask() {
    if (!gProxyUpdate.thread)
        return;
    // Under the lock, so that a task that is just taking a request does not clear the flags afterwards.
    const bool isLocked = LockRequests();
    gProxyUpdate.isStopping = true;
    gProxyUpdate.stopDraft = 1;
    RaiseCancelFlags(1);
    if (isLocked)
        UnlockRequests();
    if (gProxyUpdate.ProxyUpdateTerminateEvent)
        SetEvent(gProxyUpdate.ProxyUpdateTerminateEvent);
    if (gProxyUpdate.ProxyUpdateTaskExitEvent)
        WaitForSingleObject(gProxyUpdate.ProxyUpdateTaskExitEvent, INFINITE);
    // The event is the task's last act, but its thread still has to leave this module.
    WaitForSingleObject(gProxyUpdate.thread, INFINITE);
    RaiseCancelFlags(0);
    ReleaseEverything();
}
