#include "render/SecondarySpikes.h"

#include "render/EffectTypes.h"
#include "render/SpikeRenderer.h"

bool DrawSecondarySpikes(const StampContext &context, StarStamp *stamp, int32_t px, int32_t py) {
    const RenderSettings &settings = context.settings;
    const uint32_t onePercent = SpikeBrightness(settings.secondaryIntensity) / 100;
    ArmShape arm{};
    arm.sharpnessFactor = StarSharpnessFactor(context) * 0.5;
    arm.widthFactor = StarWidthFactor(context);
    arm.length = settings.length * 90 / 100;
    arm.decay = settings.secondaryIntensity;
    for (const BurstRay &ray : kStarBurstTable) {
        arm.angle = settings.angle + ray.angle * 10;
        arm.brightness = static_cast<uint32_t>(ray.weight) * onePercent;
        if (!DrawArm(context, stamp, px, py, arm))
            return false;
    }
    return true;
}
