#include "render/stamp/SourceTint.h"

#include <algorithm>

namespace {

// Positive saturation pushes this much harder than the same negative one pulls: meant so.
constexpr int64_t kPushFactor = 15;
constexpr int64_t kSaturationScale = 150;

// Moves a channel away from (or, below 0, toward) the mean of the other two.
uint32_t SaturateChannel(uint32_t channel, uint32_t other1, uint32_t other2, int64_t saturation) {
    const int64_t mean = static_cast<int64_t>((uint64_t{other1} + other2) / 2);
    const int64_t moved = channel + (channel - mean) * saturation / kSaturationScale;
    return static_cast<uint32_t>(std::clamp<int64_t>(moved, 0, kFractionOne));
}

} // namespace

Tint MakeSourceTint(const LightSource &source, int32_t colorSaturation, uint32_t value) {
    const uint32_t r = source.Red, g = source.Green, b = source.Blue;
    if (colorSaturation == 0)
        return Tint{{r, g, b}, value};
    const int64_t s = colorSaturation > 0 ? colorSaturation * kPushFactor : colorSaturation;
    return Tint{{SaturateChannel(r, g, b, s), SaturateChannel(g, r, b, s), SaturateChannel(b, r, g, s)},
                value};
}
