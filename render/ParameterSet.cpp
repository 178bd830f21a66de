#include "render/ParameterSet.h"

RenderSettings MakeRenderSettings(const ParameterSet &parameters, double scale) {
    RenderSettings settings{};
    settings.scale = scale;
    settings.threshold = parameters.threshold;
    settings.intensity = parameters.intensity;
    settings.length = parameters.length;
    settings.angle = parameters.angle;
    settings.numberOfPoints = parameters.numberOfPoints;
    settings.spikeSharpness = parameters.spikeSharpness;
    settings.colorSaturation = parameters.colorSaturation;
    settings.rainbowIntensity = parameters.rainbowIntensity;
    settings.rainbowFrequency = parameters.rainbowFrequency;
    settings.secondaryIntensity = parameters.secondaryIntensity;
    settings.softFlareIntensity = parameters.softFlareBrightness;
    settings.effectsOnly = parameters.outputSpikesOnly != 0;
    settings.effectType = parameters.effectType;
    ClampRenderSettings(&settings);
    return settings;
}
