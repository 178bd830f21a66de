// Samples of a TIFF that lie in the file as they are.
#pragma once

#include "host/pictures/Picture.h"

namespace host {

// Fills the picture's planes from a file without compression, in strips, grey or RGB without more channels.
// The picture's size and kind are told, its planes have room and are empty. False, and they stay so, when the
// file is laid out in another way or ends early.
bool TakeTiffStrips(const Bytes &file, Picture *picture);

// Adds `count` pixels of `bands` samples each to the planes; a pixel's samples beyond the planes are dropped.
void AppendPixels(const uint8_t *pixels, size_t bands, size_t count, Picture *picture);

} // namespace host
