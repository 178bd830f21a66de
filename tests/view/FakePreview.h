// Stands in for the preview's images and task, so that the display can be tested to the pixel: the picture is
// a pattern that tells the document pixel, and every call is kept.
#pragma once

#include "ui/PreviewGeometry.h"

#include <cstdint>
#include <vector>
#include <windows.h>

struct FakeChange {
    IntRect rect; // of a point: left and top alone
    double zoom;  // 0 for a rectangle
    int32_t mode;
};

struct FakePreview {
    bool startFails = false, paintFails = false;
    int starts = 0, stops = 0, paintings = 0;
    std::vector<FakeChange> changes;
};
extern FakePreview gFakePreview;

// What the pattern shows for a document pixel.
COLORREF PatternColor(int32_t x, int32_t y);
