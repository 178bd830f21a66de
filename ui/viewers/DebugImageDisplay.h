// The part of the debug image viewer that shows the picture and, below it, the lines of text. Drag, arrow
// keys: pan. Wheel, plus, minus: zoom. Ctrl+C: copies the whole picture. One display at a time; dialog's
// thread.
#pragma once

#include "ui/viewers/DebugImageView.h"

#include <windows.h>

// Sent to the dialog as a notification of the control in WM_COMMAND: the user has chosen another zoom here.
constexpr int kDebugZoomChanged = 0x0601;

// Turns a static control into the display. Everything it makes is given back when the control is destroyed.
void AttachDebugDisplay(HWND display);
// Makes and shows a picture; without one (nothing kept, no memory) a text says so.
void ShowDebugPicture(HWND display, int32_t choice);
void SetDebugZoom(HWND display, DebugZoom zoom);
DebugZoom GetDebugZoom();
// Copies the whole picture, unzoomed, to the clipboard. Failures are reported.
void CopyDebugPicture(HWND display);
