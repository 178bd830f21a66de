#include "ui/DpiScope.h"

#include <cstring>
#include <windows.h>

namespace {

using SetContextFunction = void *(WINAPI *)(void *);

// The system's handles for per-monitor awareness, newest form first; a system refuses those it does not know.
constexpr intptr_t kPerMonitorContexts[] = {-4, -3};

int gEntered = 0;             // EnterDialogDpi without its LeaveDialogDpi
void *gHostContext = nullptr; // what the thread had before the first of them

SetContextFunction SetContext() {
    static const SetContextFunction function = [] {
        const FARPROC address =
            GetProcAddress(GetModuleHandleA("user32.dll"), "SetThreadDpiAwarenessContext");
        SetContextFunction found;
        static_assert(sizeof found == sizeof address);
        memcpy(&found, &address, sizeof found);
        return found;
    }();
    return function;
}

// Null when the context was refused or there is no such setting.
void *ChangeContext(void *context) {
    return SetContext() && context ? SetContext()(context) : nullptr;
}

DpiCookie EnterPerMonitorContext() {
    for (const intptr_t context : kPerMonitorContexts)
        if (const DpiCookie previous = ChangeContext(reinterpret_cast<void *>(context)))
            return previous;
    return nullptr;
}

} // namespace

DpiCookie EnterDialogDpi() {
    const DpiCookie previous = EnterPerMonitorContext();
    if (gEntered++ == 0)
        gHostContext = previous;
    return previous;
}

void LeaveDialogDpi(DpiCookie cookie) {
    ChangeContext(cookie);
    if (--gEntered == 0)
        gHostContext = nullptr;
}

DpiCookie EnterHostDpi() {
    return ChangeContext(gHostContext);
}

void LeaveHostDpi(DpiCookie cookie) {
    ChangeContext(cookie);
}
