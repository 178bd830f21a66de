// The filter's own planar copy of the host's image: described, read in the host's tiles, and written back.
#pragma once

#include "diag/ResultCodes.h"
#include "engine/ImageBuffer.h"

// Describes and allocates a buffer for an area, in the mode, depth and planes of the host's image. The caller
// writes every sample: they hold any value. Failures are reported to the user.
HostResult DescribeBuffer(const IntRect &area, bool wantMask, ImageBuffer *buffer);

// Reads the whole filter area, with the selection mask when the host has one. On success the caller owns
// *input; on failure it is left alone.
HostResult ReadInputImage(ImageBuffer *input);

// Writes a rendered tile to its place, as many planes as the host takes.
HostResult WriteTile(const ImageBuffer &tile);
