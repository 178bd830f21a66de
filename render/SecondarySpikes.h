// The burst of short thin spikes around the centre of every star.
#pragma once

#include "render/StampContext.h"
#include "render/StarStamp.h"

// Draws the burst into the star's own stamp. The settings' secondary intensity and length are above 0. False
// when memory ran out (reported); the burst ends there.
bool DrawSecondarySpikes(const StampContext &context, StarStamp *stamp, int32_t px, int32_t py);
