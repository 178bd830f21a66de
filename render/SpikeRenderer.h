// Draws one straight arm of a star into a stamp.
#pragma once

#include "render/StampContext.h"
#include "render/StarStamp.h"

#include <cstdint>

struct ArmShape {
    int32_t angle;          // tenths of a degree, any integer; 0 points up, clockwise
    double sharpnessFactor; // edge steepness, above 0
    double widthFactor;     // above 0
    int32_t length;         // length value; below 1 nothing is drawn
    int32_t decay;          // 0..100: the higher, the steeper the fall-off
    uint32_t brightness;    // fraction; below a quarter of the floor nothing is drawn
};

// Factors that all arms of a star share.
double StarSharpnessFactor(const StampContext &context);
double StarWidthFactor(const StampContext &context);
// A percentage of intensity as the brightness of an arm.
uint32_t SpikeBrightness(int32_t intensityPercent);

// Appends the arm's entries to the stamp of phase (px, py), each 0..3 quarter pixels. The angle tables must
// be built. False only when memory ran out, which is reported; what was drawn so far stays.
bool DrawArm(const StampContext &context, StarStamp *stamp, int32_t px, int32_t py, const ArmShape &arm);
