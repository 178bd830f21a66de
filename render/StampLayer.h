// Lays a stamp onto an image.
#pragma once

#include "engine/Geometry.h"
#include "engine/ImageBuffer.h"
#include "render/PixelBlender.h"
#include "render/StarStamp.h"

#include <cstdint>

// Where a stamp goes: a pixel and the sub-pixel phase, each 0..3 quarter pixels.
struct StampPlace {
    int32_t x, y;
    int32_t px, py;
};

// Blends the phase's stamp, tinted, into the part of the target that lies in the output. A stamp without
// entries is built first; that it could not be completed does not matter. False when the set has no builder.
bool LayStamp(StampSet *set, const StampPlace &place, const Tint &tint, const IntRect &target,
              ImageBuffer *output);
