// The settings of one render: a clamped copy of the user's parameters, plus the zoom.
#pragma once

#include <cstdint>

// Effect types: four-character codes, first character in the high byte.
constexpr uint32_t kStandardStar = 0x65665430;  // 'efT0'
constexpr uint32_t kHollywoodStar = 0x65665431; // 'efT1'
constexpr uint32_t kReligiousCross = 0x65665432;
constexpr uint32_t kHyperStar = 0x65665433;
constexpr uint32_t kNorthStar = 0x65665434;
constexpr uint32_t kVectorStar = 0x65665435;
constexpr uint32_t kStarBurst = 0x65665436; // 'efT6'

struct RenderSettings {
    double scale;               // zoom in percent; 100.0 is 1:1
    int16_t threshold;          // 0..100
    int16_t intensity;          // 0..100
    int16_t length;             // 0..100
    int16_t angle;              // tenths of a degree, -900..900
    int16_t numberOfPoints;     // 1..32
    int16_t spikeSharpness;     // 0..100
    int16_t colorSaturation;    // -100..100
    int16_t rainbowIntensity;   // 0..100
    int16_t rainbowFrequency;   // 0..100
    int16_t secondaryIntensity; // 0..100
    int16_t softFlareIntensity; // 0..100
    bool effectsOnly;
    uint32_t effectType;
};

// Brings every field into its range above (an unknown effect type becomes the Standard Star; a scale that is
// not a number, or outside 1..100000, becomes 100), so that no value from outside can divide by zero,
// overflow or hang.
void ClampRenderSettings(RenderSettings *settings);
