// The arithmetic of the preview's zoom: the ladder, fitting, the menu's items and the text. Zooms are in
// percent. Portable, apart from the reporter.
#pragma once

#include <cstddef>
#include <cstdint>

constexpr double kInitialZoom = 100.0;
constexpr double kActualPixelsZoom = 100.0;
constexpr double kMinimumZoom = 0.3;
constexpr double kMaximumZoom = 1600.0;

constexpr int kZoomStepCount = 19;
extern const double kZoomLadder[kZoomStepCount]; // ascending, from the minimum to the maximum

// Into [kMinimumZoom, kMaximumZoom]; what is not a number becomes the initial zoom.
double ClampZoom(double zoom);

enum ZoomSelector : int32_t { kZoomStepIn = 0, kZoomStepOut = 1, kZoomActualPixels = 2 };

// The zoom that a step from `zoom` leads to: the next larger or smaller value of the ladder, its end when
// there is none. A selector that is none of the above is reported, and `zoom` comes back.
double LookUpZoom(ZoomSelector selector, double zoom);

// The zoom at which an image just fits an area, clamped. 100 when one of them is empty.
double FitZoom(int32_t areaWidth, int32_t areaHeight, int32_t imageWidth, int32_t imageHeight);

// Items of the zoom menu that set a fixed zoom: command and zoom. The labels of four of them are cut to whole
// percents on purpose.
struct ZoomMenuItem {
    uint32_t command;
    double zoom;
};
constexpr int kZoomMenuItemCount = 16;
extern const ZoomMenuItem kZoomMenuItems[kZoomMenuItemCount];

// False, with *zoom unchanged, for a command that sets no fixed zoom.
bool ZoomOfMenuCommand(uint32_t command, double *zoom);

// " 66.67%". False, with an empty text, when it does not fit.
bool FormatZoomText(double zoom, char *text, size_t capacity);
