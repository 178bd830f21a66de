// Builds the star stamp of one sub-pixel phase: the arms of the effect type, then the secondary spikes.
#pragma once

#include "render/StampContext.h"
#include "render/StarStamp.h"

// Empties the stamp and draws the star of phase (px, py), each 0..3. False when memory ran out (reported);
// the stamp keeps what was drawn so far.
bool DrawStar(const StampContext &context, StarStamp *stamp, int32_t px, int32_t py);
