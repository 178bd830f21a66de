// The pictures of the detection's benchmarks and of the regression check.
#pragma once

#include "engine/image/ImageBuffer.h"

#include <cstdint>

// All are 8-bit RGB, the same on every machine. Null pixels when memory ran out.

// Lights on a night sky, at most as many as asked for.
ImageBuffer MakeNightPicture(int32_t width, int32_t height, int32_t lights);
// A bright sky whose noise is full of small light sources.
ImageBuffer MakeNoisySkyPicture(int32_t width, int32_t height);
// A checkerboard of white squares on black.
ImageBuffer MakeSquaresPicture(int32_t width, int32_t height, int32_t side);
