#include "render/ParameterSet.h"

namespace {

// Where the settings have each parameter.
constexpr int16_t RenderSettings::*kSettingFields[kParameterCount] = {&RenderSettings::threshold,
                                                                      &RenderSettings::intensity,
                                                                      &RenderSettings::length,
                                                                      &RenderSettings::angle,
                                                                      &RenderSettings::numberOfPoints,
                                                                      &RenderSettings::spikeSharpness,
                                                                      &RenderSettings::colorSaturation,
                                                                      &RenderSettings::rainbowIntensity,
                                                                      &RenderSettings::rainbowFrequency,
                                                                      &RenderSettings::secondaryIntensity,
                                                                      &RenderSettings::softFlareIntensity};

} // namespace

RenderSettings MakeRenderSettings(const ParameterSet &parameters, double scale) {
    RenderSettings settings{};
    settings.scale = scale;
    for (int32_t i = 0; i < kParameterCount; ++i)
        settings.*kSettingFields[i] = parameters.*kParameterFields[i];
    settings.effectsOnly = parameters.outputSpikesOnly != 0;
    settings.effectType = parameters.effectType;
    ClampRenderSettings(&settings);
    return settings;
}
