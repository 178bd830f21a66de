// The burst of short thin spikes around the centre of every star.
#pragma once

#include "render/shape/ArmSpan.h"

#include <cstdint>

// Lists the burst's arms, kBurstRays of them, in drawing order; returns their number. The settings' secondary
// intensity and length are above 0.
int32_t ListSecondarySpikes(const StampContext &context, ArmShape *shapes);
