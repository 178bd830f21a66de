// The yardstick's render driver: stamps built afresh for every render, laid entry by entry.
#pragma once

#include "engine/image/ImageBuffer.h"
#include "engine/table/LightSourceTable.h"
#include "tests/reference/ReferenceBlend.h"
#include "tests/reference/render/ReferenceStamps.h"

#include <array>
#include <cstdint>
#include <vector>

namespace reference {

// Brightness a normal source must exceed to get a star.
uint32_t CutLevel(int32_t threshold);
Color Saturate(const Color &color, int32_t saturation);

// A source as it is laid: its pixel in the target's coordinates and its phases.
struct Placement {
    int64_t x, y;
    int32_t px, py;
};
Placement Place(const LightSource &source, double scale);

// Renders `target` into `output` (same mode and depth as `image`, bounds holding the target).
void Render(const RenderContext &context, const ImageBuffer &image, const IntRect &target,
            const std::vector<LightSource> &sources, ImageBuffer *output);

} // namespace reference
