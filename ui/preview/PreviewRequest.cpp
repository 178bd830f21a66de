#include "ui/preview/PreviewRequest.h"

#include <algorithm>
#include <iterator>

PreviewRequest MakePreviewRequest(const PreviewGeometry &geometry, bool previewOn,
                                  const ParameterSet &parameters) {
    PreviewRequest request{};
    request.display = geometry.display;
    request.image = ScaledImage(geometry);
    request.centerX = geometry.centerX;
    request.centerY = geometry.centerY;
    request.zoom = geometry.zoom;
    request.previewOn = previewOn ? 1 : 0;
    for (int32_t i = 0; i < kParameterCount; ++i)
        request.parameters[i] = static_cast<uint16_t>(parameters.*kParameterFields[i]);
    request.effectType = parameters.effectType;
    request.effectsOnly = parameters.outputSpikesOnly != 0 ? 1 : 0;
    return request;
}

RenderSettings SettingsOfRequest(const PreviewRequest &request) {
    ParameterSet parameters{};
    for (int32_t i = 0; i < kParameterCount; ++i)
        parameters.*kParameterFields[i] = static_cast<int16_t>(request.parameters[i]);
    parameters.effectType = request.effectType;
    parameters.outputSpikesOnly = request.effectsOnly != 0;
    return MakeRenderSettings(parameters, kFullZoom);
}

bool SameEffect(const PreviewRequest &a, const PreviewRequest &b) {
    return std::equal(std::begin(a.parameters), std::end(a.parameters), std::begin(b.parameters)) &&
           a.effectType == b.effectType && a.effectsOnly == b.effectsOnly;
}

bool SameView(const PreviewRequest &a, const PreviewRequest &b) {
    return a.display.left == b.display.left && a.display.top == b.display.top &&
           a.display.right == b.display.right && a.display.bottom == b.display.bottom &&
           a.centerX == b.centerX && a.centerY == b.centerY && a.zoom == b.zoom;
}
