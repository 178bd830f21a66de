// The yardstick's analysis image: the picture as samples, reduced by an exact area average when it is large.
#pragma once

#include "engine/image/AnalysisImage.h"
#include "engine/image/ImageBuffer.h"

#include <cstdint>
#include <vector>

namespace reference {

struct Analysis {
    IntRect bounds;
    double scale;
    uint32_t maxBrightness;
    std::vector<PixelSample> samples; // row by row over the bounds
};

Analysis PrepareAnalysis(const ImageBuffer &image);

// All zero outside the bounds.
PixelSample Fetch(const Analysis &analysis, int64_t x, int64_t y);
void Mark(Analysis *analysis, int64_t x, int64_t y);
int64_t Brightness(const PixelSample &sample);
bool IsInside(const Analysis &analysis, int64_t x, int64_t y);
bool IsSelected(const PixelSample &sample);

} // namespace reference
