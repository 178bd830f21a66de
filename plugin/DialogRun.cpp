#include "plugin/DialogRun.h"

#include "plugin/PluginState.h"

// There is no dialog yet: a run that asks for it goes on as if the user had pressed OK at once.
HostResult RunDialog() {
    *gDialogPending = 0;
    return kNoError;
}
