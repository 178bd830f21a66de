// The picture files that the picture library reads.
#pragma once

#include "host/pictures/Picture.h"
#include "host/pictures/PictureKind.h"

#include <string>

namespace host {

// False with a reason; *picture and *origin are then left alone. Throws std::bad_alloc. `origin` is what
// TellPictureKind told of the file; the reader adds to it.
bool ReadWithLibrary(const Bytes &file, bool isStrict, Picture *picture, PictureOrigin *origin,
                     std::string *why);

} // namespace host
