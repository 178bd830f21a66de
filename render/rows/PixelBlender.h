// Blends one tinted value into a working pixel.
#pragma once

#include "engine/image/FixedPoint.h"

#include <algorithm>
#include <cstdint>

// Blend modes: four-character codes, first character in the high byte.
constexpr uint32_t kBlendScreen = 0x7363726E; // 'scrn'
constexpr uint32_t kBlendNormal = 0x6E6F726D; // 'norm'
constexpr uint32_t kBlendAdd = 0x4E586164;    // 'NXad'

// Channels 0..16777215: red, green, blue.
struct WorkingPixel {
    uint32_t channel[3];
};

// A colour and how much of it; all fractions.
struct Tint {
    uint32_t channel[3];
    uint32_t value;
};

inline uint32_t LargestChannel(const uint32_t channel[3]) {
    return std::max(channel[0], std::max(channel[1], channel[2]));
}

// The channel as a fraction of the largest one.
uint32_t NormaliseChannel(uint32_t channel, uint32_t largest);

// Mixes the pixel with its screen by the source's normalised colour, by the source's strength.
void BlendScreen(const Tint &source, WorkingPixel *pixel);
// Any of the modes above. An unknown one is reported and changes nothing.
void BlendPixel(uint32_t mode, const Tint &source, WorkingPixel *pixel);
