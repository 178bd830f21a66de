// What kind of picture file some bytes are, and how it was written. Told by content, never by a name.
#pragma once

#include "host/base/ByteStream.h"
#include "host/metadata/PngChunks.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct _VipsImage; // NOLINT(bugprone-reserved-identifier): its own name

namespace host {

enum class PictureKind { kNone, kJpeg, kPng, kTiff, kWebp, kAvif, kGif, kNetpbm, kBmp };

// How the file of a picture was written, so that another one can be written alike, and what it said besides
// its samples.
struct PictureOrigin {
    PictureKind kind = PictureKind::kNone;
    int32_t quality = 0;                // of JPEG, 1..100, estimated from its tables; 0: unknown
    bool halvesColour = false;          // JPEG: colours at half the resolution both ways
    bool isLossless = false;            // WebP
    uint32_t compression = 1;           // TIFF: the tag's number; 1: none
    bool hasPredictor = false;          // TIFF
    bool isBig = false;                 // TIFF: 64-bit offsets
    size_t labPlace = 0;                // TIFF of 8-bit Lab samples: where the file says so; 0: another
    int32_t frames = 1;                 // pictures in the file; the first one is read
    std::vector<Bytes> comments;        // of JPEG, and of a PNG the texts so called
    std::vector<PngText> texts;         // of PNG
    std::shared_ptr<_VipsImage> fields; // EXIF, XMP, IPTC, comments, resolution; null: none. Read only
    std::vector<std::string> notes;     // what the user should know of the reading, a sentence each
};

// The kind, with what the bytes tell of the origin; `fields` and `notes` stay empty. False with a reason for
// bytes that are no picture of a known kind, or one that is refused by name.
bool TellPictureKind(const Bytes &file, PictureOrigin *origin, std::string *why);

enum class MetadataChoice { kKeep, kNoPlace, kNone };
enum class Subsampling { kAsInput, k444, k420 };
// Compressions of a TIFF, by the picture library's numbers.
enum TiffCompressionChoice {
    kVipsTiffAsInput = -1,
    kVipsTiffNone = 0,
    kVipsTiffJpeg = 1,
    kVipsTiffDeflate = 2,
    kVipsTiffPackBits = 3,
    kVipsTiffLzw = 5
};

// What is not said is as in the input's file, where that is of the same kind.
struct WriteOptions {
    int32_t quality = 0; // 1..100; 0: not said
    Subsampling subsampling = Subsampling::kAsInput;
    int compression = kVipsTiffAsInput;
    MetadataChoice metadata = MetadataChoice::kKeep;
    const char *format = ""; // an ending that stands for the kind; empty: the path's own
};

} // namespace host
