// The yardstick's pixel blender.
#pragma once

#include "tests/reference/ReferenceMath.h"

#include <array>
#include <cstdint>

namespace reference {

using Color = std::array<uint32_t, 3>;

constexpr uint32_t kScreenMode = 0x7363726E; // 'scrn'
constexpr uint32_t kNormalMode = 0x6E6F726D; // 'norm'
constexpr uint32_t kAddMode = 0x4E586164;    // 'NXad'

// Blends a colour with a strength into a destination of working values. An unknown mode leaves it as it is.
Color Blend(Precision precision, uint32_t mode, const Color &source, uint32_t value,
            const Color &destination);

} // namespace reference
