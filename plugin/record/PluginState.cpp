#include "plugin/record/PluginState.h"

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

void *ParentWindow() {
    const PlatformData *platform = nullptr;
    if (gAboutRecord)
        platform = gAboutRecord->platformData;
    else if (gFilterRecord)
        platform = gFilterRecord->platformData;
    return platform && platform->hwnd ? platform->hwnd : GetActiveWindow();
}
