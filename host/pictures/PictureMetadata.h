// What picture files carry besides samples: orientation, colour profile, and signs of a file cut short.
#pragma once

#include "host/base/ByteStream.h"

#include <cstddef>
#include <cstdint>

namespace host {

struct JpegInfo {
    bool isComplete = false; // the end marker is there
    int32_t orientation = 1;
    Bytes iccProfile; // empty when parts are missing
};
// False when the bytes are no JPEG.
bool ReadJpegInfo(const Bytes &file, JpegInfo *info);

bool IsPng(const Bytes &file);
// PNG colour type (0 grey, 2 RGB, 3 palette, 4 grey and alpha, 6 RGB and alpha), or -1.
int32_t PngColourType(const Bytes &file);

// True when the profile belongs to pictures of so many colour planes.
bool DoesProfileFit(const Bytes &profile, int32_t colourPlanes);
// Puts a colour profile into a finished PNG or JPEG. A file that is neither stays as it is.
void InsertProfile(const Bytes &profile, Bytes *file);

} // namespace host
