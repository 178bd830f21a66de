// How far the bytes of a band can still move toward white: the darkest byte of each block. Where many lights
// shine most of what they lay is rounded away, and need not be worked out.
//
// Lights only brighten, so that what was measured once stays a bound. It is measured anew whenever so much
// has been laid that it is worth it.
#pragma once

#include "engine/image/Geometry.h"
#include "engine/image/ImageBuffer.h"
#include "render/shape/ArmSpan.h"

#include <cstddef>
#include <cstdint>

constexpr int32_t kBlockWidth = 64, kBlockRows = 16;

// Of the one thread that draws the band. Owner of `darkest`: the record; FreeRoomMap releases it.
struct RoomMap {
    const ImageBuffer &output;  // of bytes
    IntRect band;               // blocks are counted from its corner
    int64_t laid = 0;           // pixels, since the last measurement
    uint8_t *darkest = nullptr; // of each block, the planes side by side; null: not known
};

int32_t CountColumns(const RoomMap &map);
// Measures when it is worth it and there is memory for it.
void RefreshRoomMap(RoomMap *map);
void FreeRoomMap(RoomMap *map);

// What the darkest bytes of some blocks of a row could move at most under a light of these strengths, by
// plane.
float LargestWay(const RoomMap &map, const PixelRange &columns, int32_t row, const float *strength);
