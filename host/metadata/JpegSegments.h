// What stands in front of a JPEG's coded data: how much it was compressed, and its comments.
#pragma once

#include "host/base/ByteStream.h"

#include <cstdint>
#include <vector>

namespace host {

// The quality, 1..100, whose usual luminance table comes nearest to the file's; 0 when it has none.
int32_t EstimateJpegQuality(const Bytes &file);

// Whether its colours have half the resolution both ways. Not so for other ways of saving on them.
bool HalvesJpegColour(const Bytes &file);

// The comments, each as its bytes.
std::vector<Bytes> ReadJpegComments(const Bytes &file);
// Comment segments as they stand in a file, and where in a JPEG they belong.
Bytes MakeJpegComments(const std::vector<Bytes> &comments);
size_t JpegCommentPlace(const uint8_t *bytes, size_t length);

} // namespace host
