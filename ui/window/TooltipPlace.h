// Where tooltips stand: beside the control they are about, never over it, the control in use or an open list.
// Dialog's thread.
#pragma once

#include <windows.h>

// From now on, until the tooltip window is destroyed.
void KeepTooltipsClear(HWND tooltipWindow);

// The place of a tip of `size` for a control, within `work` and clear of all `used` rectangles; below the
// control where there is no such place. Screen coordinates.
POINT PlaceOfTooltip(SIZE size, const RECT &control, const RECT &work, const RECT *used, int usedCount);
