// The filter's own planar copy of the host's image: described, read in the host's tiles, and written back.
#pragma once

#include "diag/ResultCodes.h"
#include "engine/image/ImageBuffer.h"

// Reads the whole filter area, with the selection mask when the host has one. On success the caller owns
// *input; on failure it is left alone.
HostResult ReadInputImage(ImageBuffer *input);

// Writes a tile of the image to its place, as many planes as the host takes. The tile lies inside the image.
HostResult WriteTile(const ImageBuffer &image, const IntRect &tile);
