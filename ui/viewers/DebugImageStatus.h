// The debug image viewer's two lines of text about the pixel under the mouse.
#pragma once

#include "render/KeptRun.h"

#include <cstdint>

struct DebugStatus {
    char text[400]; // a line feed between the lines
};

// What is shown: the picture's size, its scale and the number of lights.
DebugStatus DescribeDebugPicture(int32_t choice, const DebugPicturePlace &place);
// The pixel (column, row) of the picture, its values, and the light nearest to it. `bgra` is that pixel.
DebugStatus DescribeDebugPixel(int32_t choice, const DebugPicturePlace &place, int32_t column, int32_t row,
                               const uint8_t *bgra);
