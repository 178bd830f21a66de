#include "ui/window/DpiScope.h"

#include "ui/window/SystemFunction.h"

#include <cstdint>
#include <windows.h>

namespace {

using SetContextFunction = void *(WINAPI *)(void *);

// The system's handles for per-monitor awareness, newest form first; a system refuses those it does not know.
constexpr intptr_t kPerMonitorContexts[] = {-4, -3};

// Looked up each time: a static's guard would make a system object that nobody closes.
SetContextFunction SetContext() {
    return SystemFunction<SetContextFunction>(GetModuleHandleA("user32.dll"), "SetThreadDpiAwarenessContext");
}

// Null when the context was refused or there is no such setting.
void *ChangeContext(void *context) {
    const SetContextFunction set = context ? SetContext() : nullptr;
    return set ? set(context) : nullptr;
}

} // namespace

DpiCookie EnterDialogDpi() {
    for (const intptr_t context : kPerMonitorContexts)
        if (const DpiCookie previous = ChangeContext(reinterpret_cast<void *>(context)))
            return previous;
    return nullptr;
}

void LeaveDialogDpi(DpiCookie cookie) {
    ChangeContext(cookie);
}
