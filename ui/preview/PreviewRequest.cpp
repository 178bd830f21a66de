#include "ui/preview/PreviewRequest.h"

#include <algorithm>
#include <iterator>

namespace {

int16_t ParameterAt(const PreviewRequest &request, int index) {
    return static_cast<int16_t>(request.parameters[index]);
}

} // namespace

RenderSettings SettingsOfRequest(const PreviewRequest &request) {
    RenderSettings settings{};
    settings.scale = 100.0;
    settings.threshold = ParameterAt(request, 0);
    settings.intensity = ParameterAt(request, 1);
    settings.length = ParameterAt(request, 2);
    settings.angle = ParameterAt(request, 3);
    settings.numberOfPoints = ParameterAt(request, 4);
    settings.spikeSharpness = ParameterAt(request, 5);
    settings.colorSaturation = ParameterAt(request, 6);
    settings.rainbowIntensity = ParameterAt(request, 7);
    settings.rainbowFrequency = ParameterAt(request, 8);
    settings.secondaryIntensity = ParameterAt(request, 9);
    settings.softFlareIntensity = ParameterAt(request, 10);
    settings.effectsOnly = request.effectsOnly != 0;
    settings.effectType = request.effectType;
    ClampRenderSettings(&settings);
    return settings;
}

bool SameEffect(const PreviewRequest &a, const PreviewRequest &b) {
    return std::equal(std::begin(a.parameters), std::end(a.parameters), std::begin(b.parameters)) &&
           a.effectType == b.effectType && a.effectsOnly == b.effectsOnly;
}
