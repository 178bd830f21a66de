#include "render/StampPicture.h"

#include "engine/image/FixedPoint.h"
#include "render/RenderDriver.h"
#include "render/RenderState.h"
#include "render/shape/AngleTables.h"
#include "render/shape/FixedPower.h"
#include "render/shape/ParameterTable.h"

#include <algorithm>

namespace {

constexpr int32_t kMargin = 8; // pixels of black around what is seen
// A star too faint to show leaves a picture all the same.
constexpr IntRect kLeastArea = {-kMargin, -kMargin, kMargin + 1, kMargin + 1};
constexpr IntRect kLargestArea = {-kStampPictureReach, -kStampPictureReach, kStampPictureReach + 1,
                                  kStampPictureReach + 1};

// Of 255: what is fainter cannot be told from black, and there is a wide ring of it around every star.
constexpr int kLeastLevel = 4;

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

// What the star and the flare may cover, which is more than what is seen of them.
IntRect FindReach(const RenderSettings &settings) {
    BuildAngleTables();
    PrepareCoveragePower();
    UpdateStamps(MakeStampContext(settings));
    gRenderState.abort = &kNeverAborted;
    IntRect area = kLeastArea;
    if (settings.intensity >= 1 || settings.secondaryIntensity >= 1) {
        const StarStamp &star = NeedStarStamp(0, 0);
        if (star.count > 0)
            area = JoinRects(area, star.box);
    }
    if (settings.softFlareIntensity >= 1) {
        const int32_t rings = NeedFlareStamp(0, 0).rings;
        area = JoinRects(area, {-rings, -rings, rings + 1, rings + 1});
    }
    return IntersectRects(area, kLargestArea);
}

// On black: the source image is not looked at. False when memory ran out; the image is then empty.
bool RenderAlone(const RenderSettings &settings, const IntRect &area, ImageBuffer *image) {
    bool maskFailed = false;
    if (AllocateImageBuffer(kModeRgb8, 1, 0, area, false, image, &maskFailed) != kNoError)
        return false;
    RenderSettings alone = settings;
    alone.effectsOnly = true;
    LightSource light = MakeWhiteLight();
    if (RenderEffect(alone, *image, area, {&light, 1}, kNeverAborted, image))
        return true;
    FreeImageBuffer(image);
    return false;
}

bool IsSeen(const ImageBuffer &image, int64_t index) {
    return std::max({image.planes[0][index], image.planes[1][index], image.planes[2][index]}) >= kLeastLevel;
}

// The light's own pixel, and all that are seen.
IntRect FindSeenArea(const ImageBuffer &image) {
    IntRect seen = {0, 0, 1, 1};
    int64_t index = 0;
    for (int32_t y = image.bounds.top; y < image.bounds.bottom; ++y)
        for (int32_t x = image.bounds.left; x < image.bounds.right; ++x, ++index)
            if (IsSeen(image, index))
                seen = JoinRects(seen, {x, y, x + 1, y + 1});
    return seen;
}

} // namespace

IntRect FindStampArea(const RenderSettings &settings) {
    const IntRect reach = FindReach(settings);
    ImageBuffer image{};
    if (!RenderAlone(settings, reach, &image))
        return reach;
    const IntRect seen = FindSeenArea(image);
    FreeImageBuffer(&image);
    return IntersectRects(
        {seen.left - kMargin, seen.top - kMargin, seen.right + kMargin, seen.bottom + kMargin}, reach);
}

bool DrawStampPicture(const RenderSettings &settings, const IntRect &area, uint8_t *bgra) {
    ImageBuffer image{};
    if (!RenderAlone(settings, area, &image))
        return false;
    CopyToBgra(image, bgra);
    FreeImageBuffer(&image);
    return true;
}
