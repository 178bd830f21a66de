// Reading and writing picture files of any known kind.
#pragma once

#include "host/pictures/Picture.h"
#include "host/pictures/PictureKind.h"

#include <functional>
#include <string>
#include <vector>

namespace host {

// The kind is told by the file's content: JPEG, PNG, TIFF, WebP, AVIF, GIF (its first frame), BMP, PPM, PGM,
// PAM, PFM. A picture that its file says to turn is turned upright; CMYK and Lab colours become sRGB ones.
// False with a reason for anything else, and for damaged files; only without `isStrict` a JPEG with a damaged
// middle is taken, with a note. *origin may be null.
bool ReadPicture(const std::wstring &path, Picture *picture, std::string *why,
                 PictureOrigin *origin = nullptr, bool isStrict = true);

enum class MetadataChoice { kKeep, kNoPlace, kNone };
enum class Subsampling { kAsInput, k444, k420 };
// Compressions of a TIFF, by the picture library's numbers.
enum TiffCompressionChoice {
    kVipsTiffAsInput = -1,
    kVipsTiffNone = 0,
    kVipsTiffJpeg = 1,
    kVipsTiffDeflate = 2,
    kVipsTiffPackBits = 3,
    kVipsTiffLzw = 5,
    kVipsTiffZstd = 7
};

// What is not said is as in the input's file, where that is of the same kind.
struct WriteOptions {
    int32_t quality = 0; // 1..100; 0: not said
    Subsampling subsampling = Subsampling::kAsInput;
    int compression = kVipsTiffAsInput;
    MetadataChoice metadata = MetadataChoice::kKeep;
};

constexpr int32_t kDefaultJpegQuality = 95;
// What a JPEG will be written with.
int32_t JpegQuality(const PictureOrigin &origin, const WriteOptions &options);

// Endings that can be written, and what their kinds can hold of the picture. False with a reason.
bool CanHoldPicture(const std::wstring &path, const Picture &picture, std::string *why);
// What the kind drops all the same (transparency, colour profile, metadata), a sentence each.
std::vector<std::string> ListDropped(const std::wstring &path, const Picture &picture,
                                     const PictureOrigin &origin, const WriteOptions &options);

// Writes by the ending. The file appears under its name only when it is complete, and not at all when
// isCancelled (may be empty) says so before. False with a reason; empty when cancelled.
bool WritePicture(const std::wstring &path, const Picture &picture, const std::function<bool()> &isCancelled,
                  std::string *why, const PictureOrigin &origin = {}, const WriteOptions &options = {});

} // namespace host
