// Where a turn of the wheel goes. Dialog's thread.
#pragma once

#include <windows.h>

// A turn that came to the dialog or to one of its controls goes to what lies under the pointer, the preview
// or a pair of the parameters, or nowhere.
void OnDialogWheel(WPARAM wheel, LPARAM screenPoint);

// A message before it reaches its control. True when the control must not see it; an open list scrolls
// itself.
bool TakeWheel(HWND dialog, const MSG &message);
