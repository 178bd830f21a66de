// One straight arm of a star as rows of spans.
//
// An arm is walked along its major axis one pixel at a time, and at each step scanned across, outward from
// its centre line, while it covers something. All positions are whole pixels (multiples of four quarter
// pixels), so the arm reaches a pixel at most once, and what it lays there depends on nothing but the pixel:
// on its place relative to the centre line (the coverage) and on its distance from the phase point (the value
// along the arm and the rainbow). That is why no pixel needs to be kept: any piece of any row can be worked
// out when it is laid, in any order, by any thread, and is the same as if the arm had been walked. Order
// matters only where several arms or light sources meet in one pixel, and there they are laid in the order in
// which they were drawn.
//
// What walking decides for the whole arm is where it ends: at the first step whose largest value is below the
// threshold. That is found once for each arm, when its stamp is built.
//
// A span is the part of one row that the arm may cover. Its ends may lie a little outside: pixels there have
// a coverage of 0 or less and get the value 0, which never shows.
#pragma once

#include "engine/image/Geometry.h"
#include "render/shape/SpikeProfile.h"
#include "render/shape/StampContext.h"

#include <algorithm>
#include <atomic>
#include <cstdint>

struct ArmShape {
    double sharpnessFactor; // edge steepness, above 0
    double widthFactor;     // above 0
    int32_t angle;          // tenths of a degree, any integer; 0 points up, clockwise
    int32_t length;         // length value; below 1 nothing is drawn
    int32_t decay;          // 0..100: the higher, the steeper the fall-off
    uint32_t brightness;    // fraction; below a quarter of the floor nothing is drawn
};

// Pixel offsets from the source's pixel, both included; from > to: none.
struct PixelRange {
    int32_t from, to;
};
inline PixelRange Intersect(const PixelRange &a, const PixelRange &b) {
    return {std::max(a.from, b.from), std::min(a.to, b.to)};
}
// How far its nearest pixel lies from 0.
inline int32_t NearestToZero(const PixelRange &range) {
    return range.from > 0 ? range.from : range.to < 0 ? -range.to : 0;
}

struct Arm {
    bool majorIsY;
    int32_t majorPhase, minorPhase; // quarter pixels
    int32_t majorLimit, minorLimit; // in pixels
    PixelRange walked;              // along the major axis
    double slope;                   // minor per major
    double stretch;                 // length of the centre line over one unit of the major axis
    double crossing;                // minor position of the centre line at major position 0, quarter pixels
    double halfWidth;               // of the arm across, quarter pixels
    double edgeSlope;               // of its edges
    uint32_t largestShare;          // of a value along the arm that any pixel gets, a fraction
    double reach;                   // beyond this from the centre line the coverage is 0, quarter pixels
    double back;              // how far, along the centre line, a pixel within reach may lie behind its step
    const ValueTable *values; // along the arm, by distance
    IntRect box;              // pixels that the arm may cover
};

// An arm of the stamp of phase (px, py), with `values` as its brightness along its length. The angle tables
// and the coverage power must be ready. It is worth nothing when *abort has become non-zero by the end.
Arm MakeArm(const StampContext &context, int32_t px, int32_t py, const ArmShape &shape,
            const ValueTable *values, const std::atomic<uint8_t> &abort);

// How much of the pixel at minor position `x` the arm covers: 0 or less outside, at most 1. Quarter pixels.
inline double ArmCoverage(const Arm &arm, double centre, int32_t x) {
    const double rising = 0.5 - ((centre - arm.halfWidth) - x) * 0.25 * arm.edgeSlope;
    const double falling = ((centre + arm.halfWidth) - x) * 0.25 * arm.edgeSlope + 0.5;
    const double edge = rising < falling ? rising : falling;
    return edge < 1.0 ? edge : 1.0;
}
// Minor position of the centre line at a major position; quarter pixels.
inline double ArmCentre(const Arm &arm, int32_t position) {
    return arm.crossing + arm.slope * position;
}

// What a pixel's value is made of: the share of the value along the arm. Offsets from the source's pixel.
struct ArmPixel {
    uint32_t distance, share, along;
};
ArmPixel MeasureArmPixel(const Arm &arm, int32_t row, int32_t column);

// The part of `walked` in which the arm has values of at least `level`, or a little more.
PixelRange WalkAbove(const Arm &arm, uint32_t level);
// Rows that the arm may cover while it walks `walked`.
PixelRange ArmRows(const Arm &arm, const PixelRange &walked);
// What it may cover of one row, from left to right.
PixelRange ArmSpan(const Arm &arm, const PixelRange &walked, int32_t row);
// The part of it that has values of at least `level`, or a little more.
PixelRange SpanAbove(const Arm &arm, const PixelRange &walked, int32_t row, uint32_t level);

constexpr double kRoundingRoom = 1.0 / 64; // pixels; far more than any position is rounded by
constexpr double kLevelRoom = 0.01;        // quarter pixels, by which a level line may be taken askew

// The centre line by rows: a row's pixels within a reach of it lie within reach × `perReach` pixels of the
// middle, first + perRow × row; but for walks' ends and limits.
struct ArmLine {
    double first, perRow, perReach;
};
ArmLine LineOf(const Arm &arm);
// Whether limits across cut nothing off in the area.
bool IsWithinLimits(const Arm &arm, const IntRect &area);
// How far from the centre line, in quarter pixels, values of at least `level` may lie in a block; 0 or less:
// nowhere.
double ReachInBlock(const Arm &arm, const IntRect &block, double level);
