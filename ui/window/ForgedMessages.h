// Messages of the system's that anybody can send.
#pragma once

#include <windows.h>

// WM_DESTROY or WM_NCDESTROY to a window that is not being destroyed: the system hides it, or what it lies
// in, first.
bool IsForgedDestruction(HWND window, UINT message);
