#include "ui/window/WaitCursor.h"

#include "diag/module/ModuleInstance.h"
#include "resources/ResourceIds.h"

void ShowWaitCursor() {
    SetCursor(LoadCursorA(ModuleInstance(), MAKEINTRESOURCEA(kWaitCursorId)));
}
