// BMP files.
#pragma once

#include "host/base/FileBytes.h"
#include "host/pictures/Picture.h"

#include <string>

namespace host {

// False with a reason; *picture is then left alone. Throws std::bad_alloc.
bool ReadBmp(const Bytes &file, Picture *picture, std::string *why);
// The picture has a depth and planes that the format can hold; what it cannot hold besides is dropped.
bool WriteBmp(const Picture &picture, OutputFile *file, std::string *why);

} // namespace host
