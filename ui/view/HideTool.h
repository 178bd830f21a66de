// The Hide Effects and Show Hidden Effects tools: which lights a gesture is about to change, and the change
// itself. Dialog's thread, after the light source table is complete.
#pragma once

#include "ui/view/ViewState.h"

#include <cstdint>

constexpr int32_t kNoHideMode = -1;

// The mode of the light source table that a mouse state works with, or kNoHideMode.
int32_t HideModeOfMouseState(int32_t mouseState);

// What the pointer stands over or the dragged rectangle holds, to be marked on the display.
struct LightMarks {
    bool active;
    int32_t mode;
    int32_t single; // index in the table, when no rectangle is dragged; -1: none
    bool inRect;    // all in `rect` instead of the single one
    IntRect rect;   // document
};

// Calls `mark` with the client position of every light that is marked and can be seen on the display. Returns
// how many there were.
int VisitMarkedLights(const LightMarks &marks, const ViewState &view,
                      void (*mark)(ViewPoint client, void *context), void *context);

// The gestures: a click on a client point, and a client rectangle. Whether any light changed; the caller then
// asks for a preview.
bool ChangeLightAt(const ViewState &view, ViewPoint client, int32_t mode);
bool ChangeLightsInRect(const ViewState &view, const IntRect &client, int32_t mode);
