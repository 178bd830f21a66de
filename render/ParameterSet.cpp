#include "render/ParameterSet.h"

RenderSettings MakeRenderSettings(const ParameterSet &parameters, double scale) {
    RenderSettings settings{};
    settings.scale = scale;
    for (int32_t i = 0; i < kParameterCount; ++i)
        settings.*kParameters[i].setting = parameters.*kParameterFields[i];
    settings.effectsOnly = parameters.outputSpikesOnly != 0;
    settings.effectType = parameters.effectType;
    ClampRenderSettings(&settings);
    return settings;
}
