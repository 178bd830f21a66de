#include "tests/viewers/KeptScene.h"

#include "engine/SerialBuild.h"
#include "render/shape/EffectTypes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

// The picture at a point of the scene, of full size.
void PaintPixel(int32_t x, int32_t y, uint8_t *colors) {
    colors[0] = colors[1] = colors[2] = 12;
    if (RectContains(kFlatArea, x, y))
        colors[0] = colors[1] = colors[2] = 240;
    for (const SceneSpot &spot : kSceneSpots) {
        const double square = double(x - spot.x) * (x - spot.x) + double(y - spot.y) * (y - spot.y);
        const double share = std::exp(-square / (2 * spot.sigma * spot.sigma));
        colors[0] = std::max(colors[0], static_cast<uint8_t>(spot.red * share));
        colors[1] = std::max(colors[1], static_cast<uint8_t>(spot.green * share));
        colors[2] = std::max(colors[2], static_cast<uint8_t>(spot.blue * share));
    }
}

void PaintScene(int32_t scale, ImageBuffer *image) {
    for (int64_t i = 0; i < image->planeSize; ++i) {
        const int32_t x = static_cast<int32_t>(i % image->width) / scale;
        const int32_t y = static_cast<int32_t>(i / image->width) / scale;
        uint8_t colors[3];
        PaintPixel(x, y, colors);
        for (int c = 0; c < 3; ++c)
            image->planes[c][i] = colors[c];
        image->planes[3][i] = RectContains(kTransparentArea, x, y) ? 0 : 255;
        image->mask[i] = RectContains(kUnselectedArea, x, y) ? 0 : 255;
    }
}

} // namespace

RenderSettings SceneSettings() {
    RenderSettings settings{};
    settings.scale = 100.0;
    settings.threshold = 100;
    settings.intensity = 70;
    settings.length = 40;
    settings.angle = 150;
    settings.numberOfPoints = 4;
    settings.spikeSharpness = 50;
    settings.softFlareIntensity = 30;
    settings.effectType = kStandardStar;
    return settings;
}

bool KeepScene(const RenderSettings &settings, int32_t scale) {
    ImageBuffer image{};
    bool maskFailed = false;
    if (AllocateImageBuffer(kModeRgb8, 1, 1, {0, 0, kSceneWidth * scale, kSceneHeight * scale}, true, &image,
                            &maskFailed) != kNoError)
        return false;
    PaintScene(scale, &image);
    SetImageGeometry(image.bounds);
    const std::atomic<uint8_t> cancel{0};
    const bool built = BuildLightSourceTable(image, 1, cancel) == kNoError;
    FreeImageBuffer(&image);
    const LightSourceTable table = TakeTableToKeep();
    KeepRun(table, settings, 1);
    return built;
}

uint32_t DrawnPicture::At(int32_t x, int32_t y) const {
    const size_t i = (size_t(y - place.area.top) * size_t(Width()) + size_t(x - place.area.left)) * 4;
    return uint32_t{bgra[i]} | uint32_t{bgra[i + 1]} << 8 | uint32_t{bgra[i + 2]} << 16;
}

DrawnPicture DrawPicture(int32_t choice) {
    DrawnPicture drawn;
    EXPECT_TRUE(FindDebugPicture(choice, &drawn.place));
    drawn.bgra.resize(size_t(drawn.Width()) * size_t(drawn.Height()) * 4);
    EXPECT_TRUE(DrawDebugPicture(choice, drawn.place, drawn.bgra.data()));
    size_t opaque = 0;
    for (size_t i = 3; i < drawn.bgra.size(); i += 4)
        opaque += drawn.bgra[i] == 255;
    EXPECT_EQ(opaque * 4, drawn.bgra.size());
    return drawn;
}
