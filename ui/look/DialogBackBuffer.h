// The bitmap that holds the dialog's background, so that the dialog is painted without a flicker. One at a
// time; dialog's thread.
#pragma once

#include <windows.h>

// A bitmap of the size of the window. False when it cannot be made; the dialog is then painted without it.
bool CreateDialogBackBuffer(HWND dialog);
// After a change of the window's size or of the system's colours. Keeps the old bitmap when there is no room
// for the new one.
void ResizeDialogBackBuffer(HWND dialog);
void FreeDialogBackBuffer();

// The whole answer to WM_PAINT: copies the invalid rectangle, and leaves out the controls that cover
// themselves.
void PaintDialogFromBackBuffer(HWND dialog);
// The answer to WM_PRINTCLIENT, with which themed controls ask for what is behind them.
void PrintDialogFromBackBuffer(HWND dialog, HDC dc);
