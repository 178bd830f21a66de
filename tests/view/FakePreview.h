// Stands in for the preview's images and task, so that the display can be tested to the pixel: the picture is
// a pattern that tells the document pixel, and every call is kept.
#pragma once

#include "ui/pixels/PreviewGeometry.h"

#include <cstdint>
#include <vector>
#include <windows.h>

struct FakePreview {
    bool startFails = false, paintFails = false;
    int starts = 0, stops = 0, paintings = 0;
    std::vector<int32_t> changeModes; // of ChangeEffectAt and ChangeEffectsInRect
};
extern FakePreview gFakePreview;

constexpr uint32_t kSurroundPixel = 0x606060;
// What a client pixel of a view must show, 0xRRGGBB.
uint32_t PatternPixel(const PreviewGeometry &view, int32_t x, int32_t y);
