#include "diag/ReportOwner.h"

#include "diag/LogState.h"

void SetReportOwner(NativeWindow window, uint32_t threadId) {
    gLogState.ownerThread = threadId;
    SetReportOwnerWindow(window);
}

NativeWindow SetReportOwnerWindow(NativeWindow window) {
    const HWND previous = gLogState.ownerWindow;
    gLogState.ownerWindow = static_cast<HWND>(window);
    return previous;
}

bool IsReportOwnerThread() {
    return gLogState.ownerThread == GetCurrentThreadId();
}
