// Scroll bar controls in the dark look. The system draws one while it follows the mouse, in its own colours
// alone, so that the mouse is followed by us too. Dialog's thread.
#pragma once

#include <windows.h>

// Acts only while the look is dark. Comes off when the window is destroyed.
void DressScrollBar(HWND bar);
