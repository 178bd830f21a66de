// The main dialog's procedure. Dialog's thread.
#pragma once

#include <windows.h>

// The module exports it.
extern "C" INT_PTR CALLBACK BrillatrixProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
