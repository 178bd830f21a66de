// The round soft flare around every light source.
//
// A flare is drawn in square rings around its centre, each pixel once, and its value depends on the pixel's
// distance from the phase point alone. So nothing need be kept of it but the values by distance and the
// number of rings: any piece of a row can be worked out when it is laid.
#pragma once

#include "render/shape/SpikeProfile.h"
#include "render/shape/StampContext.h"

#include <cstdint>

struct FlareStamp {
    bool built;
    int32_t px, py;      // phase, quarter pixels
    int32_t rings;       // pixels in each direction
    uint32_t centre;     // value of the centre, which is drawn even below the floor
    bool centreIsForced; // the centre's value is below the floor
};

// The flare's values as far as they are not below the floor. False when memory ran out; the table is then
// left alone.
bool BuildFlareTable(const StampContext &context, ValueTable *table);

// The flare of phase (px, py), each 0..3.
FlareStamp MakeFlare(const StampContext &context, int32_t px, int32_t py);

// Value of the flare at a distance in tenths of a quarter pixel: a fraction, straight from std::pow.
uint32_t FlareValueAt(const StampContext &context, uint32_t distance);
