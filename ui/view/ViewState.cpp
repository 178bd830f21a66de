#include "ui/view/ViewState.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int32_t kBorder = 1;
// A fitted image may come out a trifle larger than the display, by the rounding of its zoom.
constexpr double kFitTolerance = 1e-6;

// One of the two axes, so that every rule stands once.
struct Axis {
    int32_t imageExtent;             // document
    int32_t scaledLow, scaledHigh;   // of the image
    int32_t displayLow, displayHigh; // client
    double center;                   // scaled
};

Axis AxisX(const ViewState &v) {
    const IntRect scaled = ScaleRect(v.image, v.zoom);
    return {
        v.image.right - v.image.left, scaled.left, scaled.right, v.display.left, v.display.right, v.centerX};
}

Axis AxisY(const ViewState &v) {
    const IntRect scaled = ScaleRect(v.image, v.zoom);
    return {
        v.image.bottom - v.image.top, scaled.top, scaled.bottom, v.display.top, v.display.bottom, v.centerY};
}

int32_t Extent(const Axis &axis) {
    return axis.displayHigh - axis.displayLow;
}

// From the visible part's edge to its centre, in whole pixels as the centre is shown.
int32_t Half(const Axis &axis) {
    return Extent(axis) / 2;
}

// What Half leaves of the display's true middle: none, or half a pixel.
double HalfRest(const Axis &axis) {
    return Extent(axis) % 2 / 2.0;
}

bool Fits(const Axis &axis, double zoom) {
    return axis.imageExtent * zoom / 100.0 <= Extent(axis) + kFitTolerance;
}

int32_t RoundCenter(double center) {
    return static_cast<int32_t>(std::llround(center));
}

int32_t VisibleLow(const Axis &axis) {
    return RoundCenter(axis.center) - Half(axis);
}

// An image that fits stands in the middle; any other fills the display.
double ClampCenter(const Axis &axis, double zoom) {
    const int32_t low = axis.scaledLow, high = axis.scaledHigh;
    const int32_t extent = Extent(axis), half = Half(axis);
    if (Fits(axis, zoom)) {
        const int32_t margin = (extent - (high - low)) / 2;
        return low - margin + half;
    }
    const double first = low + half, last = std::max(first, static_cast<double>(high - extent + half));
    return std::clamp(axis.center, first, last);
}

void ClampView(ViewState *view) {
    view->centerX = ClampCenter(AxisX(*view), view->zoom);
    view->centerY = ClampCenter(AxisY(*view), view->zoom);
}

// The scaled distance from the centre to the middle of a client pixel.
double OffsetFromCenter(const Axis &axis, int32_t client) {
    return client - axis.displayLow + 0.5 - Half(axis);
}

double ZoomCenterAbout(const Axis &axis, double ratio, double offset) {
    return (axis.center + offset) * ratio - offset;
}

int32_t DocumentPixel(const Axis &axis, double zoom, double client) {
    const double scaled = VisibleLow(axis) + (client - axis.displayLow);
    return static_cast<int32_t>(std::floor(scaled * 100.0 / zoom));
}

int32_t ClientPixel(const Axis &axis, double zoom, int32_t quarters) {
    return static_cast<int32_t>(std::floor((quarters / 4.0 + 0.5) * zoom / 100.0)) - VisibleLow(axis) +
           axis.displayLow;
}

ScrollRange RangeOf(const Axis &axis, double zoom) {
    if (Fits(axis, zoom) || Extent(axis) <= 0)
        return {0, 0, 0, 0};
    return {axis.scaledLow, axis.scaledHigh, Extent(axis), VisibleLow(axis)};
}

} // namespace

ViewState MakeViewState(const IntRect &image) {
    ViewState view = {image, {kBorder, kBorder, kBorder, kBorder}, kInitialZoom, 0.0, 0.0};
    view.centerX = (image.left + image.right) / 2.0;
    view.centerY = (image.top + image.bottom) / 2.0;
    return view;
}

void SetViewClientSize(ViewState *view, int32_t width, int32_t height) {
    // The middle of the view, not the rounded-down half of its extent, is what stays.
    const double middleX = view->centerX + HalfRest(AxisX(*view));
    const double middleY = view->centerY + HalfRest(AxisY(*view));
    view->display = {kBorder, kBorder, std::max(kBorder, width - kBorder),
                     std::max(kBorder, height - kBorder)};
    view->centerX = middleX - HalfRest(AxisX(*view));
    view->centerY = middleY - HalfRest(AxisY(*view));
    ClampView(view);
}

void SetViewZoom(ViewState *view, double zoom) {
    const double ratio = ClampZoom(zoom) / view->zoom;
    view->centerX = ZoomCenterAbout(AxisX(*view), ratio, HalfRest(AxisX(*view)));
    view->centerY = ZoomCenterAbout(AxisY(*view), ratio, HalfRest(AxisY(*view)));
    view->zoom = ClampZoom(zoom);
    ClampView(view);
}

void SetViewZoomAbout(ViewState *view, double zoom, ViewPoint client) {
    const double ratio = ClampZoom(zoom) / view->zoom;
    view->centerX = ZoomCenterAbout(AxisX(*view), ratio, OffsetFromCenter(AxisX(*view), client.x));
    view->centerY = ZoomCenterAbout(AxisY(*view), ratio, OffsetFromCenter(AxisY(*view), client.y));
    view->zoom = ClampZoom(zoom);
    ClampView(view);
}

void ZoomViewToRect(ViewState *view, const IntRect &client) {
    const Axis x = AxisX(*view), y = AxisY(*view);
    const double width = std::max(1, client.right - client.left),
                 height = std::max(1, client.bottom - client.top);
    const double zoom = ClampZoom(view->zoom * std::min(Extent(x) / width, Extent(y) / height));
    const double ratio = zoom / view->zoom;
    const double middleX = VisibleLow(x) + (client.left + client.right) / 2.0 - x.displayLow;
    const double middleY = VisibleLow(y) + (client.top + client.bottom) / 2.0 - y.displayLow;
    view->zoom = zoom;
    view->centerX = middleX * ratio - HalfRest(x);
    view->centerY = middleY * ratio - HalfRest(y);
    ClampView(view);
}

bool SetViewCenter(ViewState *view, double x, double y) {
    const PreviewGeometry before = GeometryOfView(*view);
    view->centerX = x;
    view->centerY = y;
    ClampView(view);
    const PreviewGeometry after = GeometryOfView(*view);
    return before.centerX != after.centerX || before.centerY != after.centerY;
}

PreviewGeometry GeometryOfView(const ViewState &view) {
    return {view.image, view.display, RoundCenter(view.centerX), RoundCenter(view.centerY), view.zoom};
}

ViewPoint DocumentFromClient(const ViewState &view, ViewPoint client) {
    return {DocumentPixel(AxisX(view), view.zoom, client.x + 0.5),
            DocumentPixel(AxisY(view), view.zoom, client.y + 0.5)};
}

IntRect DocumentRectFromClient(const ViewState &view, const IntRect &client) {
    const Axis x = AxisX(view), y = AxisY(view);
    // The far edge is that of the last document pixel that the last client pixel shows any of.
    const double last = 1.0 - kFitTolerance;
    return {DocumentPixel(x, view.zoom, client.left), DocumentPixel(y, view.zoom, client.top),
            DocumentPixel(x, view.zoom, client.right - 1 + last) + 1,
            DocumentPixel(y, view.zoom, client.bottom - 1 + last) + 1};
}

ViewPoint ClientFromDocument(const ViewState &view, int32_t quarterX, int32_t quarterY) {
    return {ClientPixel(AxisX(view), view.zoom, quarterX), ClientPixel(AxisY(view), view.zoom, quarterY)};
}

ScrollRange HorizontalScroll(const ViewState &view) {
    return RangeOf(AxisX(view), view.zoom);
}

ScrollRange VerticalScroll(const ViewState &view) {
    return RangeOf(AxisY(view), view.zoom);
}
