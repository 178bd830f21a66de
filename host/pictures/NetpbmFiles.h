// PPM, PGM, PAM and PFM files.
#pragma once

#include "host/base/FileBytes.h"
#include "host/pictures/Picture.h"

#include <string>

namespace host {

// False with a reason; *picture is then left alone. Throws std::bad_alloc.
bool ReadNetpbm(const Bytes &file, Picture *picture, std::string *why);

enum class NetpbmForm { kGrey, kColour, kAny, kFloat }; // PGM, PPM, PAM, PFM
// The picture has a depth and planes that the format can hold; what it cannot hold besides is dropped.
bool WriteNetpbm(NetpbmForm form, const Picture &picture, OutputFile *file, std::string *why);

} // namespace host
