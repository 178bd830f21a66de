// Lays a star or a flare onto a band of an image, row by row.
#pragma once

#include "engine/image/Geometry.h"
#include "engine/image/ImageBuffer.h"
#include "render/rows/PixelBlender.h"
#include "render/rows/RenderPath.h"
#include "render/stamp/StarStamp.h"

#include <atomic>
#include <cstdint>

// Where a stamp goes: a pixel and the sub-pixel phase, each 0..3 quarter pixels.
struct StampPlace {
    int32_t x, y;
    int32_t px, py;
};

// Where and how a worker draws. Bands of one image that have no row in common may be drawn at the same time.
struct BandTarget {
    const StampContext &context;
    const ImageBuffer &output;
    IntRect band; // inside the output
    const std::atomic<uint8_t> &abort;
    BlendColor *colors; // the worker's own, kRainbowStates of them
};

// Blends the stamp, tinted, into the band. Stops early, between two arms or some rows, when *abort becomes
// non-zero.
void LayStar(const BandTarget &target, const StarStamp &stamp, const StarTables &tables,
             const StampPlace &place, const Tint &tint);
void LayFlare(const BandTarget &target, const FlareStamp &flare, const ValueTable &values,
              const StampPlace &place, const Tint &tint);

// Smallest stamp value that can show under a tint whose largest channel is `largest`; 0xFFFFFFFF when none
// can.
uint32_t LeastVisibleValue(uint32_t largest, uint32_t tintValue, uint32_t threshold);
