#include "render/stamp/SecondarySpikes.h"

#include "render/shape/EffectTypes.h"

int32_t ListSecondarySpikes(const StampContext &context, ArmShape *shapes) {
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
        *shapes++ = arm;
    }
    return kBurstRays;
}
