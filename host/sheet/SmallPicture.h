// A picture made small enough for a contact sheet.
#pragma once

#include "host/pictures/Picture.h"

#include <string>

namespace host {

struct SmallPicture {
    int32_t width = 0, height = 0;
    Bytes rgb; // 8 bits, three bytes a pixel
};

// Averaged so that the longer side has at most `side` pixels, in sRGB where the picture's profile is known.
SmallPicture ReducePicture(const Picture &picture, int32_t side);

// As one text, for a message.
std::string PackSmallPicture(const SmallPicture &small);
// False when the text is none.
bool UnpackSmallPicture(const std::string &text, SmallPicture *small);

} // namespace host
