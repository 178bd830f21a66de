// Takes the star from a light source of the global table, or gives it one.
#pragma once

#include "engine/image/Geometry.h"
#include "engine/table/LightSource.h"

#include <cstdint>

// Hide Effects modes.
constexpr int32_t kHideEffect = 0, kRestoreHidden = 1, kForceEffect = 2, kRestoreForced = 3;
// The nearest eligible source within reach of the point (document pixels), the first in the table of several;
// -1 when none is close enough.
int32_t FindLightSourceAt(int32_t x, int32_t y, double zoomPercent, int32_t mode);
// Whether the mode would make a difference; false for a source that is not eligible.
bool IsChangedByMode(const LightSource &source, int32_t mode);
// Applies the mode to what FindLightSourceAt finds, and returns that.
int32_t SetLightSourceStateAt(int32_t x, int32_t y, double zoomPercent, int32_t mode);
// Changes every eligible source whose (X, Y) lies in the rectangle. Returns how many changed.
int32_t SetLightSourceStatesInRect(const IntRect &rect, int32_t mode);
