// The renderer in its plain form: stamps are lists of loose entries, every entry is laid by reading, blending
// and writing one pixel, on one thread. What the benchmark measures the renderer against; it shares the
// layouts, the angle tables, the source tints and the output base with the renderer.
#pragma once

#include "render/shape/StampContext.h"
#include "render/stamp/StarBuilder.h"

#include <cstdint>
#include <vector>

namespace plain {

struct StampEntry {
    int16_t dx, dy;     // pixel offset from the light source's pixel
    uint32_t factor[3]; // rainbow colour factors for red, green, blue; fractions
    uint32_t value;     // fraction
};
static_assert(sizeof(StampEntry) == 20);

using Stamp = std::vector<StampEntry>;

// Appends an entry at a position in quarter pixels; its pixel is that divided by 4, truncating toward zero.
// An entry whose pixel does not fit 16 bits is left out.
void AppendEntry(Stamp *stamp, int32_t quarterX, int32_t quarterY, const uint32_t factor[3], uint32_t value);

// Distance of a point (dx, dy) quarter pixels away, to the nearest tenth of a quarter pixel; remembered.
uint32_t MeasureDistance(int32_t dx, int32_t dy);

// The stamps of phase (px, py), each 0..3.
Stamp DrawStar(const StampContext &context, int32_t px, int32_t py);
Stamp DrawFlare(const StampContext &context, int32_t px, int32_t py);

} // namespace plain
