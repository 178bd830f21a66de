// Everything that the stamps and their memo tables depend on, gathered once at the start of a render.
#pragma once

#include "render/shape/RenderSettings.h"

#include <cstdint>

struct StampContext {
    RenderSettings settings; // clamped
    int32_t imageWidth;      // of the filtered area, in document pixels
    int32_t diagonal;        // of the filtered area, in document pixels; at least 1
    int32_t limitX, limitY;  // how far an arm may run from its centre, quarter pixels at the settings' scale
    bool preciseMode;
    uint32_t floor;
    bool needsTables; // of all values and states: laid by integers, not by glow (RowLoops.h)
};

// From clamped settings, gImageGeometry, gPreciseMode and gFloor.
StampContext MakeStampContext(const RenderSettings &settings);

// Whether stamps built under one context serve another.
bool StarStampsServe(const StampContext &built, const StampContext &wanted);
bool FlareStampsServe(const StampContext &built, const StampContext &wanted);

// Factors that all arms of a star share.
double StarSharpnessFactor(const StampContext &context);
double StarWidthFactor(const StampContext &context);
// A percentage of intensity as the brightness of an arm.
uint32_t SpikeBrightness(int32_t intensityPercent);
