// The settings of one render: a clamped copy of the user's parameters, plus the zoom.
#pragma once

#include <cstdint>

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
