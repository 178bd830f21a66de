#include "render/shape/ParameterTable.h"

#include "render/shape/EffectTypes.h"

#include <algorithm>

namespace {

constexpr double kMinScale = 1.0, kMaxScale = 100000.0, kFullScale = 100.0;
static_assert(kParameters[kNumberOfPoints].maximum == kMaxPoints);

} // namespace

void ClampRenderSettings(RenderSettings *settings) {
    // Written so that a scale that is not a number fails the test too.
    if (!(settings->scale >= kMinScale && settings->scale <= kMaxScale))
        settings->scale = kFullScale;
    for (const ParameterInfo &parameter : kParameters) {
        int16_t &value = settings->*parameter.setting;
        value = std::clamp(value, parameter.minimum, parameter.maximum);
    }
    if (FindEffectType(settings->effectType) < 0)
        settings->effectType = kStandardStar;
}
