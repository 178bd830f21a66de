#include "render/StarBuilder.h"

#include "render/EffectTypes.h"
#include "render/SecondarySpikes.h"
#include "render/SpikeRenderer.h"

namespace {

bool DrawPrimaryArms(const StampContext &context, StarStamp *stamp, int32_t px, int32_t py) {
    const RenderSettings &settings = context.settings;
    const ArmList list = LayoutStar({settings.effectType, settings.angle, settings.numberOfPoints,
                                     settings.length, SpikeBrightness(settings.intensity)});
    ArmShape arm{};
    arm.sharpnessFactor = StarSharpnessFactor(context);
    arm.widthFactor = StarWidthFactor(context);
    arm.decay = settings.intensity;
    for (int32_t i = 0; i < list.count; ++i) {
        arm.angle = list.arms[i].angle;
        arm.length = list.arms[i].length;
        arm.brightness = list.arms[i].brightness;
        if (!DrawArm(context, stamp, px, py, arm))
            return false;
    }
    return true;
}

} // namespace

bool DrawStar(const StampContext &context, StarStamp *stamp, int32_t px, int32_t py) {
    EmptyStamp(stamp);
    if (context.settings.length <= 0)
        return true;
    if (!DrawPrimaryArms(context, stamp, px, py))
        return false;
    return context.settings.secondaryIntensity <= 0 || DrawSecondarySpikes(context, stamp, px, py);
}
