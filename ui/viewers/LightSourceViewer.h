// The light source table viewer: a resizable dialog that lists the global table, to be looked at and copied.
// It never changes the table. Its template is kLightSourceTableDialogId.
#pragma once

#include <windows.h>

// The dialog procedure. One viewer at a time; while a table is being built, opening waits for it.
INT_PTR HandleLightSourceViewer(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
