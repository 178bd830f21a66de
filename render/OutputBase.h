// What the stars are drawn onto: a copy of the picture, or black for the effects alone.
#pragma once

#include "engine/image/Geometry.h"
#include "engine/image/ImageBuffer.h"

// Fills `target` of the output, as far as both images hold it, with the source's samples, bit for bit. With
// `effectsOnly` the colours become 0 there and an extra plane of the output keeps the source's samples.
// False, with a report, when the images' layouts differ and a copy is needed.
bool PrepareOutputBase(const ImageBuffer &source, const IntRect &target, bool effectsOnly,
                       ImageBuffer *output);
