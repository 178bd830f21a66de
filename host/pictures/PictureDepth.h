// Samples of another depth.
#pragma once

#include "host/pictures/Picture.h"

namespace host {

// To 8, 16 or 32 (float) bits a sample, to nearest; floats that are not between 0 and 1 are cut. White stays
// white. Throws std::bad_alloc.
void ConvertDepth(Picture &picture, int32_t depth);

} // namespace host
