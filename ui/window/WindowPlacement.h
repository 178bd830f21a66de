// Where a window may be put.
#pragma once

#include <windows.h>

// The rectangle in which a window that was last at `wanted` (screen pixels, not empty) opens: `wanted` itself
// while its caption can still be reached on some monitor that has room for it, otherwise brought into the
// work area of that monitor or the nearest one. What of the frame cannot be seen may lie outside.
RECT PlaceOnMonitor(const RECT &wanted, const RECT &invisibleFrame = {});

// By a frame on each side.
RECT GrownBy(const RECT &rect, const RECT &frame);

// The rectangle moved, and where it is too large cut down, so that it lies in the area. Any values.
RECT MoveIntoArea(const RECT &rect, const RECT &area);
