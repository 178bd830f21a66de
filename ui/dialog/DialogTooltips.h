// The dialog's tooltip window and the texts of the controls that no other room sees to. Dialog's thread.
#pragma once

#include <windows.h>

// Makes the window with all texts; it goes with the dialog. Null when it cannot be made.
HWND CreateDialogTooltips(HWND dialog);
// After a change of the layout's scale.
void FitTooltipsToScale(HWND tooltips);
