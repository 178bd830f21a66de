// The mouse on the preview display: presses, drags and releases of each tool. Points are in client
// coordinates. The display is attached.
#pragma once

#include <windows.h>

void OnDisplayButtonDown(POINT client);
void OnDisplayMouseMove(POINT client);
void OnDisplayMouseLeave();
void OnDisplayButtonUp(POINT client);
void OnDisplayTimer(UINT_PTR timer);
void OnDisplayCaptureChanged();

// Stops a gesture that is being made, as if the mouse had been taken away. False when there was none, or no
// display. The dialog calls it when Esc is pressed.
bool CancelPreviewGesture();

// A release point that means: nothing is done.
constexpr POINT kNoReleasePoint = {2147483647, 2147483647};
