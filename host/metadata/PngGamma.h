// How a PNG says what its samples mean without a colour profile, as a profile, which other kinds can hold
// too.
#pragma once

#include "host/base/ByteStream.h"

#include <cstdint>

namespace host {

// Of a file whose gAMA chunk says something else than the usual sRGB; cHRM gives the primaries. Empty for
// every other file, and where an iCCP or sRGB chunk goes before it.
Bytes MakeGammaProfile(const Bytes &file, int32_t colourPlanes);

} // namespace host
