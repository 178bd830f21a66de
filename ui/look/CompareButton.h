// The picture beside the Preview box that compares with the photograph while the mouse is held on it.
#pragma once

#include <windows.h>

// Makes it, before the layout is recorded.
void AddCompareButton(HWND dialog);
