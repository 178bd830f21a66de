// Icons and bitmaps of the dialog's static controls, drawn for the scale of its monitor and on the system's
// colours. One dialog at a time; dialog's thread.
#pragma once

#include "ui/view/ViewTools.h"

#include <windows.h>

// Puts the pictures into the controls, and again when the scale or the colours have changed. False when one
// of them is missing or there is no memory; the control then stays empty.
bool LoadDialogPictures(HWND dialog);
// Takes them out and gives them back.
void FreeDialogPictures(HWND dialog);

// A ShowToolPicture for the view tools, the zoom buttons and every other picture.
void ShowDialogPicture(HWND dialog, int controlId, ToolPicture picture);
