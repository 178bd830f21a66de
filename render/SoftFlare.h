// The round soft flare around every light source: a stamp of its own.
#pragma once

#include "render/StampContext.h"
#include "render/StarStamp.h"

#include <cstdint>

// Empties the stamp and draws the flare of phase (px, py), each 0..3. False when memory ran out; the flare
// then ends where it stands, without a report.
bool DrawFlare(const StampContext &context, StarStamp *stamp, int32_t px, int32_t py);

// Value of the flare at a distance in tenths of a quarter pixel: a fraction. Memoised for the context's
// length, scale and diagonal; the rendering thread only.
uint32_t FlareValueAt(const StampContext &context, uint32_t distance);
// Clears the memo.
void ResetFlareValues();
