// Drop-down lists that change only when somebody means to, and say what they show. Dialog's thread.
#pragma once

#include <windows.h>

// A closed list hands the wheel to its dialog instead of choosing another row. `unselected`, a constant or
// null, is shown, and is the control's text, while no row is selected; it is no row. The behaviour comes off
// when the window is destroyed.
void SubclassDropDownList(HWND combo, const wchar_t *unselected);

bool IsDropDownListOpen(HWND combo);
// Before it opens: as wide as its longest text, as far as its monitor reaches.
void FitDropDownList(HWND combo);
// Whether the closed list has no room for the whole text of the selected row, which is then written to *text.
bool IsSelectedTextCut(HWND combo, wchar_t *text, int capacity);
