// What a gesture leaves on the display: the dragged rectangle, and the marks at the lights that a Hide or
// Show gesture would change. Client coordinates unless said otherwise. The display is attached.
#pragma once

#include "engine/image/Geometry.h"

#include <cstdint>
#include <windows.h>

constexpr LONG kMarkReach = 12; // of a mark around its light

POINT ToClient(POINT screen);
// The pixels between two points, both included.
IntRect RectOfPoints(POINT a, POINT b);
// Repaints a rectangle with a margin on every side.
void InvalidateClient(const IntRect &rect, LONG margin);

// The tool that counts now: Pan while the space bar is held.
uint32_t EffectiveViewTool();
// The dragged rectangle, ends included in it; false while there is none to show.
bool DragRectangle(IntRect *rect);
// Lights were hidden or shown: what marks them is drawn again.
void RefreshHiddenLights();
// Marks what a Hide or Show gesture at the pointer would change, and repaints the marks that changed.
void UpdateLightMarks();
