// The field in which the zoom is typed, in the place of its text. Dialog's thread.
#pragma once

#include <windows.h>

// Opens it with the present zoom selected. Enter, or the loss of the focus, takes what was typed, Esc does
// not.
void OpenZoomField(HWND dialog);
// Without taking anything. Nothing when it is not open.
void CloseZoomField();
