#include "ui/window/WaitCursor.h"

#include "resources/ResourceIds.h"
#include "ui/window/ModuleInstance.h"

void ShowWaitCursor() {
    SetCursor(LoadCursorA(ModuleInstance(), MAKEINTRESOURCEA(kWaitCursorId)));
}
