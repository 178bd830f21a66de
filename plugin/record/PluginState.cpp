#include "plugin/record/PluginState.h"

#include "resources/ResourceIds.h"

#include <windows.h>

FilterRecord *gFilterRecord;
AboutRecord *gAboutRecord;
intptr_t *gData;
HostResult *gResult;
ParameterSet *gParameters;
uint8_t *gDialogPending;
const PropertyProcs *gPropertySuite;
const ErrorSuite *gErrorSuite;
std::atomic<uint8_t> gShuttingDown;

void *ModuleHandle() {
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const char *>(&gFilterRecord), &module);
    return module;
}

void *ParentWindow() {
    const PlatformData *platform = nullptr;
    if (gAboutRecord)
        platform = gAboutRecord->platformData;
    else if (gFilterRecord)
        platform = gFilterRecord->platformData;
    return platform && platform->hwnd ? platform->hwnd : GetActiveWindow();
}

void ShowWaitCursor() {
    SetCursor(LoadCursorA(static_cast<HINSTANCE>(ModuleHandle()), MAKEINTRESOURCEA(kWaitCursorId)));
}
