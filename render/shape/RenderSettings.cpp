#include "render/shape/RenderSettings.h"

#include <algorithm>

namespace {

constexpr double kMinScale = 1.0, kMaxScale = 100000.0, kFullScale = 100.0;
constexpr int16_t kMaxPercent = 100, kMaxAngle = 900, kMaxPoints = 32;

void ClampPercent(int16_t *value) {
    *value = std::clamp<int16_t>(*value, 0, kMaxPercent);
}

} // namespace

void ClampRenderSettings(RenderSettings *settings) {
    // Written so that a scale that is not a number fails the test too.
    if (!(settings->scale >= kMinScale && settings->scale <= kMaxScale))
        settings->scale = kFullScale;
    for (int16_t *percent :
         {&settings->threshold, &settings->intensity, &settings->length, &settings->spikeSharpness,
          &settings->rainbowIntensity, &settings->rainbowFrequency, &settings->secondaryIntensity,
          &settings->softFlareIntensity})
        ClampPercent(percent);
    settings->colorSaturation = std::clamp<int16_t>(settings->colorSaturation, -kMaxPercent, kMaxPercent);
    settings->angle = std::clamp<int16_t>(settings->angle, -kMaxAngle, kMaxAngle);
    settings->numberOfPoints = std::clamp<int16_t>(settings->numberOfPoints, 1, kMaxPoints);
    if (settings->effectType < kStandardStar || settings->effectType > kStarBurst)
        settings->effectType = kStandardStar;
}
