// What the parts of the Proxy Update Task share.
#pragma once

#include "ui/preview/PreviewRequest.h"
#include "ui/preview/PreviewTiles.h"

#include <cstdint>
#include <windows.h>

// Made and closed on the host's thread while the task does not run; other rules as noted.
struct ProxyUpdateTask {
    HANDLE ParametersAvailableEvent;    // auto-reset: a new request is in the shared copy
    HANDLE ProxyUpdateTerminateEvent;   // manual-reset: the task must end
    HANDLE ProxyUpdateTaskExitEvent;    // manual-reset: the task's last act
    HANDLE NewRenderingParametersMutex; // guards `shared` to `isStopping`, and the clearing of `cancel`
    HANDLE thread;
    HWND display, dialog;

    PreviewRequest staging; // dialog's thread
    PreviewRequest shared;
    uint32_t requests;     // handed over so far, by the dialog's thread
    PreviewRequest inWork; // as it was taken
    IntRect tileInWork;    // document; empty when none is
    bool isStopping;
    std::atomic<uint32_t> requestsServed; // up to this one
    PreviewCancelFlags cancel;            // read by the renderers without the lock
    std::atomic<uint8_t> stopDraft;       // a draft is not cancelled but when it takes too long, or to stop
    std::atomic<uint32_t> draftStartTime; // of a draft that may take too long; 0: none is

    // The task's own.
    PreviewRequest working;
    uint32_t requestsTaken;     // `requests` when it was taken
    bool isViewUnfinished;      // the last request's exact view
    double nanosecondsPerPixel; // that the last exact view took, or took at least
    double flushedZoom;         // of the last flush; 0: none yet
    IntRect flushedView;        // likewise, the scaled plane behind the display
    uint32_t quietSince;        // GetTickCount of the first request whose tiles wait for a flush
};

extern ProxyUpdateTask gProxyUpdate;

// Under the lock. False when there is none.
bool LockRequests();
void UnlockRequests();

// All of the working request's cancel flags; to 1 under the lock, or when no task runs.
void RaiseCancelFlags(uint8_t value);

// Cancels of the work under way what `request` makes useless. Under the lock.
void CancelForRequest(const PreviewRequest &request);

// Copies the shared request into the working one and clears the cancel flags. False when the task must end,
// or when there is no request yet.
bool TakeRequest();

// Waits without limit for a request and takes it. False when the task must end.
bool WaitForParameters();
