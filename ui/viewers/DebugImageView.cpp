#include "ui/viewers/DebugImageView.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kFourfold = 4.0;

int DrawnSize(int pictureSize, double scale) {
    return std::max(static_cast<int>(std::lround(pictureSize * scale)), 1);
}

// In the middle while it fits, else with no empty strip beside it.
int LimitOrigin(int origin, int drawn, int window) {
    if (drawn <= window)
        return (window - drawn) / 2;
    return std::clamp(origin, window - drawn, 0);
}

void LimitOrigins(DebugView *view) {
    const double scale = DebugScale(*view);
    view->originX = LimitOrigin(view->originX, DrawnSize(view->pictureWidth, scale), view->windowWidth);
    view->originY = LimitOrigin(view->originY, DrawnSize(view->pictureHeight, scale), view->windowHeight);
}

// Whole picture pixels, so that they keep their places however little of the window is drawn.
DebugSpan VisibleSpan(int picture, int window, int origin, double scale) {
    const int first = std::clamp(static_cast<int>(std::floor(-origin / scale)), 0, picture);
    const int last = std::clamp(static_cast<int>(std::ceil((window - origin) / scale)), first, picture);
    const int from = origin + static_cast<int>(std::lround(first * scale));
    const int to = origin + static_cast<int>(std::lround(last * scale));
    return {first, last - first, from, std::max(to - from, last > first ? 1 : 0)};
}

} // namespace

double DebugScale(const DebugView &view) {
    if (view.zoom == kZoomActual)
        return 1.0;
    if (view.zoom == kZoomFourfold)
        return kFourfold;
    const double across = double(std::max(view.windowWidth, 1)) / std::max(view.pictureWidth, 1);
    const double down = double(std::max(view.windowHeight, 1)) / std::max(view.pictureHeight, 1);
    return std::min(across, down);
}

void CentreDebugView(DebugView *view) {
    const double scale = DebugScale(*view);
    view->originX = (view->windowWidth - DrawnSize(view->pictureWidth, scale)) / 2;
    view->originY = (view->windowHeight - DrawnSize(view->pictureHeight, scale)) / 2;
}

void PanDebugView(DebugView *view, int dx, int dy) {
    view->originX += dx;
    view->originY += dy;
    LimitOrigins(view);
}

void ResizeDebugView(DebugView *view, int width, int height) {
    view->originX += (width - view->windowWidth) / 2;
    view->originY += (height - view->windowHeight) / 2;
    view->windowWidth = width;
    view->windowHeight = height;
    LimitOrigins(view);
}

void ZoomDebugView(DebugView *view, DebugZoom zoom, int x, int y) {
    const double before = DebugScale(*view);
    const double pictureX = (x - view->originX) / before, pictureY = (y - view->originY) / before;
    view->zoom = zoom;
    const double after = DebugScale(*view);
    view->originX = static_cast<int>(std::lround(x - pictureX * after));
    view->originY = static_cast<int>(std::lround(y - pictureY * after));
    LimitOrigins(view);
}

bool FindDebugPixel(const DebugView &view, int x, int y, int *pictureX, int *pictureY) {
    const double scale = DebugScale(view);
    const double across = std::floor((x - view.originX + 0.5) / scale);
    const double down = std::floor((y - view.originY + 0.5) / scale);
    const bool isInWindow = x >= 0 && y >= 0 && x < view.windowWidth && y < view.windowHeight;
    if (!isInWindow || across < 0 || down < 0 || across >= view.pictureWidth || down >= view.pictureHeight)
        return false;
    *pictureX = static_cast<int>(across);
    *pictureY = static_cast<int>(down);
    return true;
}

DebugSpan VisibleColumns(const DebugView &view) {
    return VisibleSpan(view.pictureWidth, view.windowWidth, view.originX, DebugScale(view));
}

DebugSpan VisibleRows(const DebugView &view) {
    return VisibleSpan(view.pictureHeight, view.windowHeight, view.originY, DebugScale(view));
}
