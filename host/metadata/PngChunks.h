// The chunks of a PNG file, and its texts.
#pragma once

#include "host/base/ByteStream.h"

#include <string>
#include <string_view>
#include <vector>

namespace host {

struct PngChunk {
    std::string_view name;
    const uint8_t *body; // in the file
    size_t length;
};
// In order, as far as the file is whole.
std::vector<PngChunk> ListPngChunks(const Bytes &file);

struct PngText {
    std::string keyword;
    Bytes chunk; // as it stands in a file
};
// Those that are neither EXIF nor XMP data.
std::vector<PngText> ReadPngTexts(const Bytes &file);
PngText MakePngText(const std::string &keyword, const Bytes &text);
// Where in a PNG file chunks may be put in: behind its header.
size_t PngTextPlace(size_t length);

} // namespace host
