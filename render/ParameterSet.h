// The effect's settings: the 40-byte record kept in the host's parameters handle, and the 255-byte block in
// which it is stored by the host and in files.
#pragma once

#include "render/shape/RenderSettings.h"

#include <cstddef>
#include <cstdint>

struct ParameterSet {
    uint16_t version[4]; // Major, Minor, Revision, Build
    int16_t intensity;
    int16_t length;
    int16_t angle; // tenths of a degree
    int16_t numberOfPoints;
    int16_t spikeSharpness;
    int16_t colorSaturation;
    int16_t rainbowIntensity;
    int16_t rainbowFrequency;
    int16_t secondaryIntensity;
    int16_t softFlareBrightness;
    uint8_t outputSpikesOnly; // 0 or 1
    uint8_t padding1[3];
    uint32_t effectType; // four-character code
    int16_t threshold;
    uint8_t padding2[2];
};
static_assert(sizeof(ParameterSet) == 40 && offsetof(ParameterSet, outputSpikesOnly) == 28 &&
              offsetof(ParameterSet, effectType) == 32 && offsetof(ParameterSet, threshold) == 36);

constexpr ParameterSet kDefaultParameters = {
    {0, 0, 0, 5}, 50, 50, 150, 6, 50, 30, 50, 50, 15, 30, 0, {0, 0, 0}, kStandardStar, 50, {0, 0}};

// The numeric parameters, in the order in which fields, tables and requests hold them.
enum Parameter : int32_t {
    kThreshold,
    kIntensity,
    kLength,
    kAngle,
    kNumberOfPoints,
    kSpikeSharpness,
    kColorSaturation,
    kRainbowIntensity,
    kRainbowFrequency,
    kSecondaryIntensity,
    kSoftFlareIntensity,
    kParameterCount,
};

// Where the record has each.
constexpr int16_t ParameterSet::*kParameterFields[kParameterCount] = {&ParameterSet::threshold,
                                                                      &ParameterSet::intensity,
                                                                      &ParameterSet::length,
                                                                      &ParameterSet::angle,
                                                                      &ParameterSet::numberOfPoints,
                                                                      &ParameterSet::spikeSharpness,
                                                                      &ParameterSet::colorSaturation,
                                                                      &ParameterSet::rainbowIntensity,
                                                                      &ParameterSet::rainbowFrequency,
                                                                      &ParameterSet::secondaryIntensity,
                                                                      &ParameterSet::softFlareBrightness};

// The clamped copy that a render works with; `scale` is the zoom in percent.
RenderSettings MakeRenderSettings(const ParameterSet &parameters, double scale);
