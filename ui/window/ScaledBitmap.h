// The module's bitmaps that exist in several sizes, premultiplied.
#pragma once

#include <windows.h>

// Scales in percent of the sizes, smallest first; their resources have the picture's id plus 1, 2, 3 and 4
// steps.
constexpr int kBitmapScales[] = {100, 125, 150, 200};
constexpr int kBitmapScaleCount = 4;

// The largest of the first `count` sizes that fits into the room, or else the smallest; the caller deletes
// it. Null, with *size unchanged, when it cannot be loaded.
HBITMAP LoadFittingBitmap(int pictureId, int count, SIZE room, SIZE *size);
