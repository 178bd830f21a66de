// The size grip in the dialog's bottom-right corner.
#pragma once

#include <windows.h>

// Dragging the icon sizes the dialog. Comes off when the window is destroyed.
void SubclassCornerIcon(HWND dialog);
