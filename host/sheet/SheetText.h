// Words on a contact sheet.
#pragma once

#include "host/base/ByteStream.h"

#include <cstdint>
#include <string>

namespace host {

// One line in the middle of a strip of that size, a byte a pixel: 0 is ground, 255 letter. What is too long
// ends in three points. Without a system that draws letters the strip is empty.
Bytes DrawLabel(const std::wstring &text, int32_t width, int32_t height);

} // namespace host
