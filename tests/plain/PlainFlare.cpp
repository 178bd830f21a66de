#include "tests/plain/PlainStamps.h"

#include "engine/FixedPoint.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace plain {

namespace {

constexpr int32_t kRingStep = 4; // one pixel, in quarter pixels
constexpr uint64_t kFlareGrowth = uint64_t{5} * 1024 * 1024;
constexpr uint32_t kFlareMemoSize = 40000; // distances below this are kept
constexpr uint32_t kFlareOffset = 256;     // taken off every value, so that the flare ends
constexpr uint32_t kUntinted[3] = {kFractionOne, kFractionOne, kFractionOne};

// 0 stands for "not yet computed".
uint32_t gFlareMemo[kFlareMemoSize];
int32_t gMemoLength, gMemoDiagonal;
double gMemoScale;

uint32_t ComputeFlareValue(const StampContext &context, uint32_t distance) {
    const double base = distance * 25.0 / context.settings.scale / context.diagonal + 1.0;
    const double exponent = 25.0 - context.settings.length * 0.2;
    const uint32_t value = static_cast<uint32_t>(67108860.0 / std::pow(base, exponent));
    return value > kFlareOffset ? value - kFlareOffset : 0;
}

struct Flare {
    const StampContext &context;
    StarStamp *stamp;
    int32_t px, py;
};

uint32_t FlarePointValue(const Flare &flare, int32_t x, int32_t y) {
    return FlareValueAt(flare.context, MeasureDistance(x - flare.px, y - flare.py));
}

// False when memory ran out.
bool AddFlarePoint(const Flare &flare, int32_t x, int32_t y) {
    const uint32_t value = FlarePointValue(flare, x, y);
    return value < flare.context.floor || AppendStampEntry(flare.stamp, x, y, kUntinted, value, kFlareGrowth);
}

// The points of ring r at j along its sides, each pixel once: at j = 0 and j = r the mirrored points coincide
// in pairs.
bool AddRingPoints(const Flare &flare, int32_t j, int32_t r) {
    if (!AddFlarePoint(flare, j, r) || !AddFlarePoint(flare, j, -r))
        return false;
    if (j != 0 && !(AddFlarePoint(flare, -j, r) && AddFlarePoint(flare, -j, -r)))
        return false;
    if (j == r)
        return true;
    if (!AddFlarePoint(flare, r, j) || !AddFlarePoint(flare, -r, j))
        return false;
    return j == 0 || (AddFlarePoint(flare, r, -j) && AddFlarePoint(flare, -r, -j));
}

bool AddRing(const Flare &flare, int32_t r) {
    for (int32_t j = 0; j <= r; j += kRingStep)
        if (!AddRingPoints(flare, j, r))
            return false;
    return true;
}

} // namespace

uint32_t FlareValueAt(const StampContext &context, uint32_t distance) {
    if (distance >= kFlareMemoSize)
        return ComputeFlareValue(context, distance);
    const RenderSettings &settings = context.settings;
    if (settings.length != gMemoLength || settings.scale != gMemoScale || context.diagonal != gMemoDiagonal) {
        ResetFlareValues();
        gMemoLength = settings.length;
        gMemoScale = settings.scale;
        gMemoDiagonal = context.diagonal;
    }
    uint32_t &known = gFlareMemo[distance];
    if (known == 0)
        known = ComputeFlareValue(context, distance);
    return known;
}

void ResetFlareValues() {
    std::fill(std::begin(gFlareMemo), std::end(gFlareMemo), 0u);
    gMemoLength = gMemoDiagonal = 0;
    gMemoScale = 0.0;
}

bool DrawFlare(const StampContext &context, StarStamp *stamp, int32_t px, int32_t py) {
    const Flare flare{context, stamp, px, py};
    EmptyStamp(stamp);
    // The centre is drawn whatever its value.
    if (!AppendStampEntry(stamp, 0, 0, kUntinted, FlarePointValue(flare, 0, 0), kFlareGrowth))
        return false;
    const int32_t lastPixel = std::min<int32_t>(context.imageWidth, std::numeric_limits<int16_t>::max());
    bool complete = true, ended = false;
    int32_t r = kRingStep;
    for (; complete && !ended && r <= kRingStep * lastPixel; r += kRingStep) {
        // Straight out along the axis: when that has faded, this ring is the last.
        ended = FlarePointValue(flare, 0, r) < context.floor;
        complete = AddRing(flare, r);
    }
    const int32_t reach = r / kRingStep;
    stamp->minX = stamp->minY = -reach;
    stamp->maxX = stamp->maxY = reach;
    return complete;
}

} // namespace plain
