// Lays rows of arms and flares by glow (RowLoops.h).
#pragma once

#include "render/stamp/Laying.h"

// Null when the rainbow has no colours: glow has one channel then.
const GlowRainbow *RainbowOf(const StarTables &tables);

void LayGlowingArm(const Laying &laying, const StarTables &tables, const Arm &arm, const PixelRange &walked);
void LayKeptGlow(const Laying &laying, const StarTables &tables, const Arm &arm, const PixelRange &walked,
                 const KeptArm &kept);
void LayGlowingFlare(const Laying &laying, const FlareStamp &flare, const ValueTable &values);
