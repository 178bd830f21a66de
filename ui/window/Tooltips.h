// The dialog's tooltip window: its texts, and its place beside the control they are about, never over that,
// the control in use or an open list. Dialog's thread.
#pragma once

#include <windows.h>

// Gives a control of the dialog its text, which the tooltip window copies. Nothing when there is no such
// control.
void AddTooltip(HWND dialog, HWND tooltipWindow, int controlId, const char *text);
void ChangeTooltip(HWND dialog, HWND tooltipWindow, int controlId, wchar_t *text);

// Keeps them clear from now on, until the tooltip window is destroyed.
void KeepTooltipsClear(HWND tooltipWindow);
