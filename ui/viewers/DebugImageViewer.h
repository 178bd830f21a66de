// The debug image viewer: a resizable dialog that shows the pictures of the kept run. Its template is
// kDebugImageDialogId. OK stores its rectangle and its choice of picture in the UI settings.
#pragma once

#include <windows.h>

// The dialog procedure. One viewer at a time, while no run is on.
INT_PTR HandleDebugImageViewer(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
