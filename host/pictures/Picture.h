// A picture file's samples at the file's own depth.
#pragma once

#include "host/base/ByteStream.h"

#include <cstdint>
#include <string>
#include <vector>

namespace host {

constexpr int32_t kMostPixels = 32767; // in each direction; what the filter interface takes

struct Picture {
    int32_t width = 0;
    int32_t height = 0;
    int32_t depth = 8;        // 8 (0..255), 16 (0..65535) or 32 (float)
    int32_t colourPlanes = 3; // 1 = grey, 3 = RGB
    bool hasAlpha = false;
    std::vector<Bytes> planes; // colours, then alpha; rows without gaps, samples in the machine's order
    Bytes iccProfile;

    bool operator==(const Picture &) const = default;
};

// False, with a reason, for a size that is 0 or too large.
bool CheckPictureSize(uint64_t width, uint64_t height, std::string *why);
// A picture of zeros, or of planes that are empty and have room for it. The size must have been checked.
// Throws std::bad_alloc.
Picture MakePicture(int32_t width, int32_t height, int32_t depth, int32_t colourPlanes, bool hasAlpha);
Picture MakeRoom(int32_t width, int32_t height, int32_t depth, int32_t colourPlanes, bool hasAlpha);

// Turns the picture as an EXIF orientation (1 .. 8) says; any other number changes nothing.
void ApplyOrientation(Picture &picture, int32_t orientation);
// Drops two of three equal colour planes.
bool AreColourPlanesEqual(const Picture &picture);
void CollapseToGrey(Picture &picture);

// 8-bit grey of any picture, alpha ignored: what a selection mask is made of.
Bytes ToGrey8(const Picture &picture);

} // namespace host
