// A small night scene with everything that the debug pictures show: three lights, an area that is not
// selected, one that is transparent, and a flat bright one. It is searched, and its run is kept.
#pragma once

#include "render/KeptRun.h"
#include "render/RenderDriver.h"
#include "render/shape/RenderSettings.h"

#include <cstdint>
#include <vector>

constexpr int32_t kSceneWidth = 420, kSceneHeight = 300;
constexpr IntRect kUnselectedArea = {0, 0, 40, 140}, kTransparentArea = {380, 0, 420, 140};
constexpr IntRect kFlatArea = {20, 170, 400, 290};

struct SceneSpot {
    int32_t x, y;
    double sigma; // pixels
    uint8_t red, green, blue;
};
constexpr SceneSpot kSceneSpots[] = {
    {100, 60, 3.0, 255, 250, 240}, {200, 90, 2.5, 255, 110, 240}, {300, 50, 2.0, 180, 190, 230}};

RenderSettings SceneSettings();

// Where the kept run's images are `scale` times larger than here. False when the table could not be built.
bool KeepScene(const RenderSettings &settings, int32_t scale = 1);

struct DrawnPicture {
    DebugPicturePlace place{};
    std::vector<uint8_t> bgra;

    int32_t Width() const { return place.area.right - place.area.left; }
    int32_t Height() const { return place.area.bottom - place.area.top; }
    // 0xRRGGBB; in the picture's own coordinates, which begin at the place's left and top.
    uint32_t At(int32_t x, int32_t y) const;
};
// A picture of the kept run; a failure when there is none, or a pixel is not opaque.
DrawnPicture DrawPicture(int32_t choice);
