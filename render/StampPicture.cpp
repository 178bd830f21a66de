#include "render/StampPicture.h"

#include "engine/FixedPoint.h"
#include "render/AngleTables.h"
#include "render/FixedPower.h"
#include "render/RenderDriver.h"
#include "render/RenderState.h"

#include <algorithm>

namespace {

constexpr int32_t kLeastReach = 8; // so that a star too faint to show leaves a picture all the same
constexpr IntRect kLargestArea = {-kStampPictureReach, -kStampPictureReach, kStampPictureReach + 1,
                                  kStampPictureReach + 1};

const std::atomic<uint8_t> kNeverAborted{0};

IntRect JoinRects(const IntRect &a, const IntRect &b) {
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
            std::max(a.bottom, b.bottom)};
}

LightSource MakeWhiteLight() {
    LightSource light{};
    light.Brightness = light.Red = light.Green = light.Blue = light.Intensity = kFractionOne;
    light.State = 2; // whatever the threshold
    return light;
}

void CopyToBgra(const ImageBuffer &image, uint8_t *bgra) {
    for (int64_t i = 0; i < image.planeSize; ++i)
        for (int plane = 0; plane < 4; ++plane)
            bgra[i * 4 + plane] = plane == 3 ? 255 : image.planes[2 - plane][i];
}

} // namespace

IntRect FindStampArea(const RenderSettings &settings) {
    RenderSettings clamped = settings;
    ClampRenderSettings(&clamped);
    BuildAngleTables();
    PrepareCoveragePower();
    UpdateStamps(clamped);
    gRenderState.abort = &kNeverAborted;
    IntRect area = {-kLeastReach, -kLeastReach, kLeastReach + 1, kLeastReach + 1};
    if (clamped.intensity >= 1 || clamped.secondaryIntensity >= 1) {
        const StarStamp &star = NeedStarStamp(0, 0);
        if (star.count > 0)
            area = JoinRects(area, star.box);
    }
    if (clamped.softFlareIntensity >= 1) {
        const int32_t rings = NeedFlareStamp(0, 0).rings;
        area = JoinRects(area, {-rings, -rings, rings + 1, rings + 1});
    }
    return IntersectRects(area, kLargestArea);
}

bool DrawStampPicture(const RenderSettings &settings, const IntRect &area, uint8_t *bgra) {
    ImageBuffer image{};
    bool maskFailed = false;
    if (AllocateImageBuffer(kModeRgb8, 1, 0, area, false, &image, &maskFailed) != kNoError)
        return false;
    RenderSettings alone = settings;
    alone.effectsOnly = true; // on black: the source image is not looked at
    LightSource light = MakeWhiteLight();
    const bool drawn = RenderEffect(alone, image, area, {&light, 1}, kNeverAborted, &image);
    if (drawn)
        CopyToBgra(image, bgra);
    FreeImageBuffer(&image);
    return drawn;
}
