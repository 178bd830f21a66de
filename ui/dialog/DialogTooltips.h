// The dialog's tooltip window and the texts of the controls that no other room sees to. Dialog's thread.
#pragma once

#include <windows.h>

// Makes the window with all texts; it goes with the dialog. Null when it cannot be made.
HWND CreateDialogTooltips(HWND dialog);
// After a change of the layout's scale.
// The pointer comes to a control: the list of settings tells the name that it has no room for, below its own
// text.
void PrepareTooltip(HWND dialog, HWND tooltips, HWND control);
void FitTooltipsToScale(HWND tooltips);
