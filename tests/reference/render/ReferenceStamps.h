// The yardstick's stamps: the arms of each effect type, the secondary spikes, the soft flare, drawn without
// memos.
#pragma once

#include "render/shape/RenderSettings.h"
#include "tests/reference/ReferenceMath.h"

#include <array>
#include <cstdint>
#include <vector>

namespace reference {

struct StampEntry {
    int16_t dx, dy; // pixel offset from the light source's pixel
    std::array<uint32_t, 3> factor;
    uint32_t value;
};
using Stamp = std::vector<StampEntry>;

// Everything a render depends on besides the pictures.
struct RenderContext {
    RenderSettings settings;
    int32_t width, height; // of the filtered area
    Precision precision;
    uint32_t floor;
};

struct Arm {
    int32_t angle, length;
    uint32_t brightness;
};

// One arm with all that the spike renderer is told.
struct ArmShape {
    Arm arm;
    double sharpnessFactor, widthFactor;
    int32_t decay;
};

// The primary arms of the settings' effect type, in drawing order.
std::vector<Arm> PrimaryArms(const RenderSettings &settings);

// Value along an arm at a distance, before the cross-section.
uint32_t ProfileValue(const RenderContext &context, const ArmShape &shape, int64_t distance);
// Rainbow colour factors at a distance.
std::array<uint32_t, 3> ColorFactors(const RenderContext &context, int64_t distance);
uint32_t FlareValue(const RenderContext &context, int64_t distance);

void DrawArm(const RenderContext &context, int32_t px, int32_t py, const ArmShape &shape, Stamp *stamp);
Stamp BuildStar(const RenderContext &context, int32_t px, int32_t py);
Stamp BuildFlare(const RenderContext &context, int32_t px, int32_t py);

} // namespace reference
