// The picture files that the picture library writes.
#pragma once

#include "host/base/FileBytes.h"
#include "host/pictures/Picture.h"
#include "host/pictures/PictureKind.h"

#include <functional>
#include <string>

namespace host {

constexpr int32_t kDefaultJpegQuality = 95;
// What a JPEG will be written with.
int32_t JpegQuality(const PictureOrigin &origin, const WriteOptions &options);

// Whether the photo's XMP data go, because they tell the place.
bool LosesXmpWithPlace(const PictureOrigin &origin, const WriteOptions &options);
// Whether a TIFF's own compression cannot be written, so that the result has none.
bool LosesCompression(const PictureOrigin &origin, const WriteOptions &options, int32_t depth);

// The picture has a depth and planes that the format can hold; what it cannot hold besides is dropped.
// False with an empty reason when cancelled.
bool WriteWithLibrary(PictureKind kind, const Picture &picture, const PictureOrigin &origin,
                      const WriteOptions &options, const std::function<bool()> &isCancelled, OutputFile *file,
                      std::string *why);

} // namespace host
