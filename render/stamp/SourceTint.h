// The colour and strength that a light source gives to its star and flare.
#pragma once

#include "engine/table/LightSourceTable.h"
#include "render/rows/PixelBlender.h"

#include <cstdint>

// The source's colour after Color Saturation (-100..100), with `value` as its strength.
Tint MakeSourceTint(const LightSource &source, int32_t colorSaturation, uint32_t value);
