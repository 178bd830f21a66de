// The effect's settings: the 40-byte record kept in the host's parameters handle, and the 255-byte block in
// which it is stored by the host and in files.
#pragma once

#include "render/shape/EffectTypes.h"
#include "render/shape/ParameterTable.h"
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

// Where the record has each parameter.
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

consteval ParameterSet MakeDefaultParameters() {
    ParameterSet set{};
    set.version[3] = 5;
    set.effectType = kStandardStar;
    for (int32_t i = 0; i < kParameterCount; ++i)
        set.*kParameterFields[i] = kParameters[i].defaultValue;
    return set;
}
constexpr ParameterSet kDefaultParameters = MakeDefaultParameters();

// The clamped copy that a render works with; `scale` is the zoom in percent.
RenderSettings MakeRenderSettings(const ParameterSet &parameters, double scale);
