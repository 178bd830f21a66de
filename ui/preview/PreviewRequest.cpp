#include "ui/preview/PreviewRequest.h"

#include <algorithm>
#include <iterator>

namespace {

int16_t ParameterAt(const PreviewRequest &request, int index) {
    return static_cast<int16_t>(request.parameters[index]);
}

} // namespace

PreviewRequest MakePreviewRequest(const PreviewGeometry &geometry, bool previewOn,
                                  const int16_t (&parameters)[kRequestParameters], uint32_t effectType,
                                  bool effectsOnly) {
    PreviewRequest request{};
    request.display = geometry.display;
    request.image = ScaledImage(geometry);
    request.centerX = geometry.centerX;
    request.centerY = geometry.centerY;
    request.zoom = geometry.zoom;
    request.previewOn = previewOn ? 1 : 0;
    for (int i = 0; i < kRequestParameters; ++i)
        request.parameters[i] = static_cast<uint16_t>(parameters[i]);
    request.effectType = effectType;
    request.effectsOnly = effectsOnly ? 1 : 0;
    return request;
}

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
