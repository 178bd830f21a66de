// The first directory of a TIFF file, classic or with 64-bit offsets.
#pragma once

#include "host/base/ByteStream.h"

#include <vector>

namespace host {

constexpr uint16_t kTiffSubfileType = 254, kTiffBits = 258, kTiffSamples = 277, kTiffCompression = 259,
                   kTiffPhotometric = 262, kTiffPredictor = 317, kTiffSubDirectories = 330,
                   kTiffCfaPattern = 33422, kTiffDngVersion = 50706;
constexpr uint16_t kTiffShort = 3, kTiffLong = 4;

constexpr uint32_t kTiffRgb = 2, kTiffLab = 8, kTiffCfa = 32803; // photometric
constexpr uint32_t kTiffReducedPicture = 1;                      // subfile type
constexpr uint32_t kTiffUncompressed = 1, kTiffJpeg = 7;         // compression

struct TiffEntry {
    uint16_t tag;
    uint16_t type;
    uint64_t count;
    uint64_t at; // of the value, in the file; not checked
};

struct TiffDirectory {
    const uint8_t *bytes = nullptr; // the file, which must outlive this
    size_t length = 0;
    ByteOrder order = ByteOrder::kLittle;
    bool isBig = false; // 64-bit offsets
    std::vector<TiffEntry> entries;
};

bool IsTiff(const uint8_t *bytes, size_t length);
// False when the bytes are no TIFF or its directory is out of bounds.
bool ReadTiffDirectory(const uint8_t *bytes, size_t length, TiffDirectory *directory);
// Another directory of the same file, at a position that an entry names.
bool ReadTiffDirectoryAt(const TiffDirectory &file, uint64_t at, TiffDirectory *directory);
// Where the tag's value stands in the file; 0 without the tag.
uint64_t TiffPlace(const TiffDirectory &directory, uint16_t tag);
bool HasTiffTag(const TiffDirectory &directory, uint16_t tag);
// Shorts, longs and offsets within the file; empty when the tag is absent or something else.
std::vector<uint64_t> TiffNumbers(const TiffDirectory &directory, uint16_t tag);
uint32_t TiffNumber(const TiffDirectory &directory, uint16_t tag, uint32_t whenAbsent);

} // namespace host
