// The first directory of a TIFF file, or of the EXIF data of other formats.
#pragma once

#include "host/base/ByteStream.h"

#include <vector>

namespace host {

constexpr uint16_t kTiffWidth = 256, kTiffHeight = 257, kTiffBits = 258, kTiffCompression = 259,
                   kTiffPhotometric = 262, kTiffStripOffsets = 273, kTiffOrientation = 274,
                   kTiffSamples = 277, kTiffRowsPerStrip = 278, kTiffStripLengths = 279,
                   kTiffXResolution = 282, kTiffYResolution = 283, kTiffPlanar = 284,
                   kTiffResolutionUnit = 296, kTiffExtraSamples = 338, kTiffSampleFormat = 339,
                   kTiffProfile = 34675;
constexpr uint16_t kTiffByte = 1, kTiffShort = 3, kTiffLong = 4, kTiffRational = 5, kTiffUndefined = 7;

// Values of kTiffPhotometric.
constexpr uint32_t kTiffWhiteIsZero = 0, kTiffBlackIsZero = 1, kTiffRgb = 2;

struct TiffEntry {
    uint16_t tag;
    uint16_t type;
    uint32_t count;
    size_t at;     // of the value, in the file
    size_t length; // bytes of it; in bounds
};

struct TiffDirectory {
    const uint8_t *bytes = nullptr; // the file, which must outlive this
    size_t length = 0;
    ByteOrder order = ByteOrder::kLittle;
    std::vector<TiffEntry> entries;
};

// False when the bytes are no TIFF or its directory is out of bounds. Entries whose values are out of bounds
// or of types not named above are left out.
bool ReadTiffDirectory(const uint8_t *bytes, size_t length, TiffDirectory *directory);
// Shorts and longs; empty when the tag is absent.
std::vector<uint32_t> TiffNumbers(const TiffDirectory &directory, uint16_t tag);
uint32_t TiffNumber(const TiffDirectory &directory, uint16_t tag, uint32_t whenAbsent);
Bytes TiffBytes(const TiffDirectory &directory, uint16_t tag);

} // namespace host
