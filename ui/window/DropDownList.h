// Drop-down lists that change only when somebody means to. Dialog's thread.
#pragma once

#include <windows.h>

// A closed list hands the wheel to its dialog instead of choosing another row. The behaviour comes off when
// the window is destroyed.
void SubclassDropDownList(HWND combo);

bool IsDropDownListOpen(HWND combo);
