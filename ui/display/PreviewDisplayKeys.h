// Keys and wheel on the preview display.
#pragma once

#include <windows.h>

// A key that goes down while the display has the focus. False when the display has no use for it.
bool OnDisplayKeyDown(WPARAM key);
void OnDisplayKeyUp(WPARAM key);
// Whole turns zoom about the pointer; with Ctrl the view moves up and down, with Shift sideways. `sideways`
// is a wheel that tilts. The point is in screen coordinates.
void OnDisplayWheel(int delta, UINT keys, POINT screen, bool sideways);
// A turn of the wheel that came to the dialog or another control. False when the pointer is elsewhere.
bool OnPreviewWheel(WPARAM wheel, LPARAM screenPoint);
