// Where the pixels of the preview lie: records and arithmetic without windows.
//
// Systems of coordinates. Document: the host's pixels. Scaled: document × zoom / 100. Rendered: document ×
// the rendering zoom / 100, so the same as scaled at 100 % and above, and the same as document below. Client:
// the display's pixels, which lie on whole scaled ones.
#pragma once

#include "engine/image/Geometry.h"

#include <cstdint>

constexpr double kFullZoom = 100.0;   // percent
constexpr int32_t kSmallestTile = 32; // scaled pixels, where the visible part is no smaller

// What the display shows. The dialog's thread makes one from its view for every request and every painting.
struct PreviewGeometry {
    IntRect filterRect;       // the image, document
    IntRect display;          // client area less the display's border of one pixel, client
    int32_t centerX, centerY; // of the visible area, scaled
    double zoom;              // percent
};

// Rendered pixels are never fewer than the image's.
inline double RenderingZoom(double zoom) {
    return zoom > kFullZoom ? zoom : kFullZoom;
}

// Every pixel of a zoomed image that the rectangle touches.
IntRect ScaleRect(const IntRect &rect, double zoom);
// Every document pixel that a rectangle of scaled ones touches; zoomed again it becomes at least `scaled`.
IntRect UnscaleRect(const IntRect &scaled, double zoom);

// The part of the scaled plane behind the display; it may reach out of the image.
IntRect VisibleRect(const PreviewGeometry &geometry);
// The whole image, scaled.
IntRect ScaledImage(const PreviewGeometry &geometry);
// The image in client pixels; it may reach far out of the display.
IntRect ImageInClient(const PreviewGeometry &geometry);

// The visible part grown by `margin` of its own width and height on every side, within the image; scaled. An
// empty one is widened to the image's outermost pixel each way.
IntRect WindowAroundView(const PreviewGeometry &geometry, double margin);

// Side of the square tiles that the visible part (scaled) is rendered in, in scaled pixels: those of 1024
// document pixels at any zoom, so that a small picture of a large image comes in pieces too; no larger than
// the visible part when there is one.
int32_t PreviewTileSize(double zoom, const IntRect &visible);
// Tiles that cover a rectangle; at least 1.
int32_t CountTiles(const IntRect &rect, int32_t tileSize);
// The tile of the grid that starts at the area's corner, nearest to (x, y), cut to the area.
IntRect TileAt(const IntRect &area, int32_t tileSize, int32_t x, int32_t y);
