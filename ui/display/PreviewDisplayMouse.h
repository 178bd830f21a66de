// The mouse on the preview display: presses, drags and releases of each tool. Points are in client
// coordinates unless said otherwise. The display is attached.
#pragma once

#include "engine/image/Geometry.h"

#include <cstdint>
#include <windows.h>

void OnDisplayButtonDown(POINT client);
void OnDisplayMouseMove(POINT client);
void OnDisplayMouseLeave();
void OnDisplayButtonUp(POINT client);
void OnDisplayTimer(UINT_PTR timer);
void OnDisplayCaptureChanged();

// The tool that counts now: Pan while the space bar is held.
uint32_t EffectiveViewTool();
// The dragged rectangle, client, ends included in it; false while there is none to show.
bool DragRectangle(IntRect *rect);
// Marks what a Hide or Show gesture at the pointer would change, and repaints the marks that changed.
void UpdateLightMarks();

// A release point that means: nothing is done.
constexpr POINT kNoReleasePoint = {2147483647, 2147483647};
