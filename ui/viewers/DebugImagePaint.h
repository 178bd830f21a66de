// Painting of the debug image viewer's display, without a flicker.
#pragma once

#include "ui/viewers/DebugImageBitmap.h"
#include "ui/viewers/DebugImageView.h"

// The display's two parts in its client area: the picture above, the lines of text below.
RECT DebugPictureArea(HWND display);
RECT DebugStatusStrip(HWND display);

// The whole answer to WM_PAINT.
void PaintDebugDisplay(HWND display, const DebugBitmap &bitmap, const DebugView &view, const char *status);
