// Where a picture lies in the window that shows it: zoom and pan.
#pragma once

#include <cstdint>

enum DebugZoom { kZoomToFit = 0, kZoomActual, kZoomFourfold };
constexpr int kDebugZooms = 3;

// All in pixels; the origin is the picture's top left corner in the window.
struct DebugView {
    DebugZoom zoom;
    int pictureWidth, pictureHeight; // 0: no picture
    int windowWidth, windowHeight;
    int originX, originY;
};

struct DebugSpan {
    int first, count; // in picture pixels
    int place, drawn; // in window pixels
};

// Window pixels for each picture pixel; above 0.
double DebugScale(const DebugView &view);
// Shows the picture from its middle.
void CentreDebugView(DebugView *view);
// Moves the picture in the window, as far as there is more of it that way.
void PanDebugView(DebugView *view, int dx, int dy);
// The window has another size; its middle shows what it showed.
void ResizeDebugView(DebugView *view, int width, int height);
// The point of the window shows what it showed.
void ZoomDebugView(DebugView *view, DebugZoom zoom, int x, int y);
// The picture's pixel under a point of the window. False beside the picture.
bool FindDebugPixel(const DebugView &view, int x, int y, int *pictureX, int *pictureY);
// The columns and rows that are seen; a count of 0 when none is.
DebugSpan VisibleColumns(const DebugView &view);
DebugSpan VisibleRows(const DebugView &view);
