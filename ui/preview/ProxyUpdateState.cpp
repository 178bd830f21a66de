#include "ui/preview/ProxyUpdateState.h"

#include "diag/ErrorReport.h"

ProxyUpdateTask gProxyUpdate;

namespace {

constexpr uint32_t kSiteTerminateAbandoned = 1861, kSiteParametersAbandoned = 1867, kSiteTimedOut = 1872,
                   kSiteWaitFailed = 1878;

void ReportUnexpected(uint32_t site, const char *text) {
    ReportError({site, kDebugMessage, 0}, kStopIcon, kTitleUnexpected, "%s", text);
}

void ReportSystemError(uint32_t site, const char *text) {
    ReportError({site, kSystemError, GetLastError()}, kStopIcon, kTitleUnexpected, "%s", text);
}

} // namespace

void RaiseCancelFlags(uint8_t value) {
    PreviewCancelFlags &cancel = gProxyUpdate.cancel;
    cancel.task = value;
    cancel.stars = value;
    cancel.reduction = value;
    cancel.conversion = value;
}

// The tile in work goes on while its effect is part of the new view, and its picture while the zoom stays.
void CancelForRequest(const PreviewRequest &request) {
    const PreviewRequest &inWork = gProxyUpdate.inWork;
    if (gProxyUpdate.requests > 0 && SameEffect(request, gProxyUpdate.shared) &&
        SameView(request, gProxyUpdate.shared) && request.previewOn == gProxyUpdate.shared.previewOn)
        return;
    if (!SameEffect(request, inWork) || request.previewOn != inWork.previewOn ||
        IsEmptyRect(IntersectRects(gProxyUpdate.tileInWork, VisibleDocument(request))))
        RaiseCancelFlags(1);
    gProxyUpdate.cancel.task = 1;
    if (request.zoom != inWork.zoom)
        gProxyUpdate.cancel.reduction = gProxyUpdate.cancel.conversion = 1;
}

bool LockRequests() {
    const HANDLE mutex = gProxyUpdate.NewRenderingParametersMutex;
    return mutex && WaitForSingleObject(mutex, INFINITE) != WAIT_FAILED;
}

void UnlockRequests() {
    ReleaseMutex(gProxyUpdate.NewRenderingParametersMutex);
}

bool TakeRequest() {
    if (!LockRequests())
        return false;
    const bool isTaken = !gProxyUpdate.isStopping && gProxyUpdate.requests > 0;
    if (isTaken) {
        gProxyUpdate.working = gProxyUpdate.inWork = gProxyUpdate.shared;
        gProxyUpdate.requestsTaken = gProxyUpdate.requests;
        RaiseCancelFlags(0);
    }
    UnlockRequests();
    return isTaken;
}

bool WaitForParameters() {
    const HANDLE events[] = {gProxyUpdate.ProxyUpdateTerminateEvent, gProxyUpdate.ParametersAvailableEvent};
    switch (WaitForMultipleObjects(2, events, FALSE, INFINITE)) {
    case WAIT_OBJECT_0:
        return false;
    case WAIT_OBJECT_0 + 1:
        return TakeRequest();
    case WAIT_ABANDONED_0:
        ReportUnexpected(kSiteTerminateAbandoned, "Event 'ProxyUpdateTerminateEvent' was abandoned.");
        ResetEvent(events[0]);
        return false;
    case WAIT_ABANDONED_0 + 1:
        ReportUnexpected(kSiteParametersAbandoned, "Event 'ParametersAvailableEvent' was abandoned.");
        ResetEvent(events[1]);
        return false;
    case WAIT_TIMEOUT:
        ReportUnexpected(kSiteTimedOut, "A wait timed out in WaitForParameters().");
        return false;
    default:
        ReportSystemError(kSiteWaitFailed, "Waiting for events failed in WaitForParameters.");
        return false;
    }
}
