#include "render/shape/SoftFlare.h"

#include "render/shape/FixedPower.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr int32_t kRingStep = 4;       // one pixel, in quarter pixels
constexpr uint32_t kFlareOffset = 256; // taken off every value, so that the flare ends
constexpr double kFlarePeak = 67108860.0;

double FlareBase(const StampContext &context, uint32_t distance) {
    return distance * 25.0 / context.settings.scale / context.diagonal + 1.0;
}

double FlareExponent(const StampContext &context) {
    return 25.0 - context.settings.length * 0.2;
}

uint32_t TakeOffset(double level) {
    const uint32_t value = static_cast<uint32_t>(level);
    return value > kFlareOffset ? value - kFlareOffset : 0;
}

int32_t LastRing(const StampContext &context) {
    return std::min<int32_t>(context.imageWidth, std::numeric_limits<int16_t>::max());
}

} // namespace

uint32_t FlareValueAt(const StampContext &context, uint32_t distance) {
    return TakeOffset(kFlarePeak / std::pow(FlareBase(context, distance), FlareExponent(context)));
}

bool BuildFlareTable(const StampContext &context, ValueTable *table) {
    const int32_t corner = kRingStep * (std::max(LastRing(context), 0) + 1);
    const uint32_t count = CountValues(context.floor, MeasureDistance(corner, corner),
                                       [&](uint32_t distance) { return FlareValueAt(context, distance); });
    if (!AllocateValueTable(count, table))
        return false;
    FixedPower power;
    PrepareFixedPower(-FlareExponent(context), &power);
    for (uint32_t distance = 0; distance < count; ++distance) {
        const double level = kFlarePeak * PowerOf(power, FlareBase(context, distance));
        const double margin = 2.0 * power.error * level,
                     part = level - static_cast<double>(static_cast<int64_t>(level));
        table->values[distance] =
            part > margin && part < 1.0 - margin ? TakeOffset(level) : FlareValueAt(context, distance);
    }
    MeasureReach(ValueAt, table);
    return true;
}

// The rings end with the first whose value straight out along the axis is below the floor; it is still drawn.
FlareStamp MakeFlare(const StampContext &context, int32_t px, int32_t py) {
    const int32_t lastRing = LastRing(context);
    const auto valueAt = [&](int32_t ring) {
        return FlareValueAt(context, MeasureDistance(-px, kRingStep * ring - py));
    };
    // Rings above the floor; values fall from ring to ring.
    const uint32_t above =
        lastRing < 1 ? 0 : CountValues(context.floor, static_cast<uint32_t>(lastRing) - 1, [&](uint32_t i) {
            return valueAt(static_cast<int32_t>(i) + 1);
        });
    const uint32_t centre = valueAt(0);
    return FlareStamp{true,   px,
                      py,     std::min(static_cast<int32_t>(above) + 1, std::max(lastRing, 0)),
                      centre, centre < context.floor};
}
