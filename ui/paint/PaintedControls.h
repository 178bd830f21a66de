// Controls that are drawn by us: names, groups and check boxes in every look, since their frames and
// underlines are to be exact at every scale; the others where the look is dark, which the system has no
// drawing of. Dialog's thread.
#pragma once

#include <windows.h>

// After the window's controls are made and again whenever the look has changed. All comes off when the
// windows are destroyed.
void DressControls(HWND dialog);
void DressTooltips(HWND tooltips); // may be null

// The answer to WM_CTLCOLOR...; null: the system's.
HBRUSH OnControlColor(UINT message, HDC dc);
// The answer to WM_NOTIFY in *result; false: the system's.
bool OnControlNotify(const NMHDR &notice, LRESULT *result);
