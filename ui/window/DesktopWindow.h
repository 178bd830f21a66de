// What the system's desktop composition knows of a window. Without it all of this does nothing.
#pragma once

#include <windows.h>

// The caption in the present look, where the system can draw a dark one.
void DressCaption(HWND window);
// Keeps a window that is shown off the screen until it is let go, so that nobody sees it half painted.
void CloakWindow(HWND window, bool isCloaked);
// What lies between the window's rectangle and its frame as one sees it: resize borders may be invisible.
RECT InvisibleFrame(HWND window);
