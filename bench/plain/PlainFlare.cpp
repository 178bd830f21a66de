#include "bench/plain/PlainStamps.h"
#include "engine/image/FixedPoint.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace plain {

namespace {

constexpr int32_t kRingStep = 4;           // one pixel, in quarter pixels
constexpr uint32_t kFlareMemoSize = 40000; // distances below this are kept
constexpr uint32_t kFlareOffset = 256;     // taken off every value, so that the flare ends
constexpr uint32_t kUntinted[3] = {kFractionOne, kFractionOne, kFractionOne};

struct Flare {
    const StampContext &context;
    int32_t px, py;
    std::vector<uint32_t> memo; // 0 stands for "not yet computed"
    Stamp stamp;
};

uint32_t ComputeFlareValue(const StampContext &context, uint32_t distance) {
    const double base = distance * 25.0 / context.settings.scale / context.diagonal + 1.0;
    const double exponent = 25.0 - context.settings.length * 0.2;
    const uint32_t value = static_cast<uint32_t>(67108860.0 / std::pow(base, exponent));
    return value > kFlareOffset ? value - kFlareOffset : 0;
}

uint32_t PointValue(Flare *flare, int32_t x, int32_t y) {
    const uint32_t distance = MeasureDistance(x - flare->px, y - flare->py);
    if (distance >= kFlareMemoSize)
        return ComputeFlareValue(flare->context, distance);
    uint32_t &known = flare->memo[distance];
    if (known == 0)
        known = ComputeFlareValue(flare->context, distance);
    return known;
}

void AddPoint(Flare *flare, int32_t x, int32_t y) {
    const uint32_t value = PointValue(flare, x, y);
    if (value >= flare->context.floor)
        AppendEntry(&flare->stamp, x, y, kUntinted, value);
}

// The points of ring r at j along its sides, each pixel once: at j = 0 and j = r the mirrored points coincide
// in pairs.
void AddRingPoints(Flare *flare, int32_t j, int32_t r) {
    for (const int32_t side : {r, -r}) {
        AddPoint(flare, j, side);
        if (j != 0)
            AddPoint(flare, -j, side);
        if (j == r)
            continue;
        AddPoint(flare, side, j);
        if (j != 0)
            AddPoint(flare, side, -j);
    }
}

} // namespace

Stamp DrawFlare(const StampContext &context, int32_t px, int32_t py) {
    Flare flare{context, px, py, std::vector<uint32_t>(kFlareMemoSize), {}};
    // The centre is drawn whatever its value.
    AppendEntry(&flare.stamp, 0, 0, kUntinted, PointValue(&flare, 0, 0));
    const int32_t lastPixel = std::min<int32_t>(context.imageWidth, std::numeric_limits<int16_t>::max());
    bool ended = false;
    for (int32_t r = kRingStep; !ended && r <= kRingStep * lastPixel; r += kRingStep) {
        // Straight out along the axis: when that has faded, this ring is the last.
        ended = PointValue(&flare, 0, r) < context.floor;
        for (int32_t j = 0; j <= r; j += kRingStep)
            AddRingPoints(&flare, j, r);
    }
    return flare.stamp;
}

} // namespace plain
