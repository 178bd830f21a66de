#include "ui/pixels/TypePictures.h"

#include "engine/image/Geometry.h"
#include "render/ParameterSet.h"
#include "render/RenderState.h"
#include "render/StampPicture.h"

#include <algorithm>
#include <atomic>
#include <cstring>

namespace {

constexpr int32_t kHalf = kTypePictureSide / 2;
// A star of the default length just fills the picture.
constexpr IntRect kPictureGeometry = {0, 0, 600, 600};
constexpr IntRect kPictureArea = {-kHalf, -kHalf, kHalf, kHalf};

constexpr uint32_t kBrightening = 2;

uint32_t gPictures[kEffectTypeCount][kTypePictureSide * kTypePictureSide];
std::atomic<bool> gDrawn{false};

bool DrawType(const EffectType &type, uint32_t *pixels) {
    ParameterSet parameters = kDefaultParameters;
    parameters.effectType = type.code;
    parameters.numberOfPoints = static_cast<int16_t>(type.presetPoints);
    parameters.intensity = 100;
    parameters.angle = 0;
    parameters.spikeSharpness = 50;
    parameters.rainbowIntensity = 0;
    uint8_t bgra[sizeof gPictures[0]];
    if (!DrawStampPicture(MakeRenderSettings(parameters, 100.0), kPictureArea, bgra))
        return false;
    memcpy(pixels, bgra, sizeof bgra);
    return true;
}

// Brightened, so that thin spikes can still be seen.
uint32_t MeanOf(const uint32_t *picture, const IntRect &area) {
    uint32_t mean = 0;
    const uint32_t count = static_cast<uint32_t>((area.right - area.left) * (area.bottom - area.top));
    for (int shift = 0; shift < 24; shift += 8) {
        uint32_t sum = 0;
        for (int32_t y = area.top; y < area.bottom; ++y)
            for (int32_t x = area.left; x < area.right; ++x)
                sum += picture[y * kTypePictureSide + x] >> shift & 255;
        mean |= std::min(sum * kBrightening / count, 255u) << shift;
    }
    return mean;
}

} // namespace

void DrawTypePictures() {
    if (gDrawn)
        return;
    const IntRect before = gImageGeometry.filterRect;
    SetImageGeometry(kPictureGeometry);
    bool isWhole = true;
    for (int32_t type = 0; type < kEffectTypeCount && isWhole; ++type)
        isWhole = DrawType(kEffectTypes[type], gPictures[type]);
    SetImageGeometry(before);
    ResetRenderState();
    gDrawn = isWhole;
}

bool ShrinkTypePicture(int32_t type, int32_t side, uint32_t *pixels) {
    if (!gDrawn || type < 0 || type >= kEffectTypeCount || side < 1 || side > kTypePictureSide)
        return false;
    const auto edge = [side](int32_t i) { return i * kTypePictureSide / side; };
    for (int32_t y = 0; y < side; ++y)
        for (int32_t x = 0; x < side; ++x)
            *pixels++ = MeanOf(gPictures[type], {edge(x), edge(y), edge(x + 1), edge(y + 1)});
    return true;
}
