// Where a window may be put.
#pragma once

#include <windows.h>

// The rectangle in which a window that was last at `wanted` (screen pixels, not empty) opens: `wanted` itself
// while its caption can still be reached on some monitor that has room for it, otherwise brought into the work
// area of that monitor or the nearest one.
RECT PlaceOnMonitor(const RECT &wanted);

// The rectangle moved, and where it is too large cut down, so that it lies in the area. Any values.
RECT MoveIntoArea(const RECT &rect, const RECT &area);
