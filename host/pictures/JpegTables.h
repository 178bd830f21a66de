// How much a JPEG was compressed, read from its tables.
#pragma once

#include "host/base/ByteStream.h"

#include <cstdint>

namespace host {

// The quality, 1..100, whose usual luminance table comes nearest to the file's; 0 when it has none.
int32_t EstimateJpegQuality(const Bytes &file);

} // namespace host
