// How the dialog's controls share what the window has more, or less, than the template.
#pragma once

#include <cstdint>
#include <windows.h>

// What the edges of a control keep their distance from.
enum Side : uint8_t {
    kNear,    // left or top of the window
    kPanel,   // left side of the panel of settings
    kBarEnd,  // where the trackbars of the panel end
    kFar,     // right or bottom of the window
    kRowTop,  // of the parameter, or of what stands above or below the parameters
    kRowPart, // kRowTop, and a little nearer to the parameter's name when there is no room
};

struct Follows {
    int controlId;
    Side left, top, right, bottom;
};

Follows FollowsOf(int controlId);

// The scale of the layout, in pixels.
struct Units {
    int across, down; // of kMeasuredUnits dialog units
};
constexpr int kMeasuredUnits = 400; // a length that shows the units' fractions

// Pixels by which the window's client area is larger than the template's, negative where it is smaller.
struct Gains {
    int across, down;
    int panel, field; // shares of `across`
    int rows;         // share of `down` that the parameters have
};
Gains ShareGains(SIZE gained, const Units &pixels);

// The rectangle in pixels of a control that the template has at `rect`, in dialog units.
RECT PlaceInPixels(const RECT &rect, const Follows &follows, const Gains &gains, const Units &pixels);

// Pixels that the template's height can lose with its texts still as large as they are.
int SparePixels(const Units &pixels);

inline int ToPixels(int units, int measuredPixels) {
    return MulDiv(units, measuredPixels, kMeasuredUnits);
}
