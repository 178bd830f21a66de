// The ways of reading and writing picture files, one for each group of kinds. Shared by the host's own files;
// others use PictureFiles.h.
#pragma once

#include "host/base/FileBytes.h"
#include "host/pictures/Picture.h"
#include "host/pictures/PictureFiles.h"
#include "host/pictures/PictureKind.h"

#include <functional>
#include <string>

namespace host {

// Readers: false with a reason; *picture and *origin are then left alone. They throw std::bad_alloc.
// `origin` is what TellPictureKind told of the file; readers add to it.
bool ReadNetpbm(const Bytes &file, Picture *picture, std::string *why);
bool ReadBmp(const Bytes &file, Picture *picture, std::string *why);
bool ReadWithLibrary(const Bytes &file, bool isStrict, Picture *picture, PictureOrigin *origin,
                     std::string *why);

// Writers. The picture has a depth and planes that the format can hold; what it cannot hold besides is
// dropped.
enum class NetpbmForm { kGrey, kColour, kAny, kFloat }; // PGM, PPM, PAM, PFM
bool WriteNetpbm(NetpbmForm form, const Picture &picture, OutputFile *file, std::string *why);
bool WriteBmp(const Picture &picture, OutputFile *file, std::string *why);
// False with an empty reason when cancelled.
bool WriteWithLibrary(PictureKind kind, const Picture &picture, const PictureOrigin &origin,
                      const WriteOptions &options, const std::function<bool()> &isCancelled, OutputFile *file,
                      std::string *why);

// Whether a profile belongs to pictures of so many colour planes.
inline bool DoesProfileFit(const Bytes &profile, int32_t colourPlanes) {
    return profile.size() >= 128 &&
           std::memcmp(profile.data() + 16, colourPlanes == 3 ? "RGB " : "GRAY", 4) == 0;
}

} // namespace host
