// Texts of the dialog's tooltip window.
#pragma once

#include <windows.h>

// Gives a control of the dialog its text, which the tooltip window copies. Nothing when there is no such
// control.
void AddTooltip(HWND dialog, HWND tooltipWindow, int controlId, const char *text);
