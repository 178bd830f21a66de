// Where the dialog's controls are for a size of its window and a scale of its monitor. One dialog at a time;
// dialog's thread.
//
// The template's dialog units are the only fixed measure: pixels follow from them and from the font at the
// scale. Rectangles of windows, the saved one too, are physical screen pixels, as a per-monitor aware thread
// sees them.
#pragma once

#include <windows.h>

// At WM_INITDIALOG, after the pictures' controls exist and before the parameter pairs are bound: notes the
// template's places, gives every control the font of the monitor's scale and the window the template's size
// at it, and lays out. False when there is no memory; the template's layout then stays.
bool RecordDialogLayout(HWND dialog);
// Puts every control where it belongs for the window's present size.
void LayOutDialog(HWND dialog);
// At WM_DESTROY.
void FreeDialogLayout();

// WM_DPICHANGED: the new scale's font and sizes, the window moved to the suggested rectangle. The pictures
// are then to be loaded again. False, with nothing done, before RecordDialogLayout.
bool OnDialogDpiChanged(HWND dialog, UINT dpi, const RECT &suggested);

// Of the whole window, for WM_GETMINMAXINFO: the template's size at the present scale. Zero before
// RecordDialogLayout.
SIZE DialogMinimumSize();

// The scale of the layout. It is the monitor's, or less where the template's size would not fit into the
// monitor's work area.
UINT DialogLayoutDpi();
// Lays out for that scale whatever the monitor has. The window keeps its size.
void SetDialogLayoutDpi(HWND dialog, UINT dpi);
