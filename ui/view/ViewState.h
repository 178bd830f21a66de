// Which part of the image the preview shows, how large, and how that changes: records and arithmetic without
// windows. Coordinates are those of ui/pixels/PreviewGeometry.h; document pixel i covers i × zoom / 100 to
// (i + 1) × zoom / 100 of the scaled plane.
#pragma once

#include "ui/pixels/PreviewGeometry.h"
#include "ui/view/ViewZoom.h"

#include <cstdint>

struct ViewPoint {
    int32_t x, y;
};

struct ViewState {
    IntRect image;              // the filtered area, document
    IntRect display;            // the display inside its border, client
    double zoom = kInitialZoom; // percent; never 0
    double centerX, centerY; // scaled; shown rounded, kept exact so that zooming there and back loses nothing
};

// The image in the middle of a display that is still empty, at the initial zoom.
ViewState MakeViewState(const IntRect &image);

// A display of a new size, one pixel of border included. What was in the middle stays there, as far as the
// image reaches.
void SetViewClientSize(ViewState *view, int32_t width, int32_t height);

// Changes the zoom (clamped) and keeps the middle of the view, or the image point under a client point, where
// it is, as far as the image reaches.
void SetViewZoom(ViewState *view, double zoom);
void SetViewZoomAbout(ViewState *view, double zoom, ViewPoint client);
// The largest zoom at which the client rectangle's content fits the display, with it in the middle.
void ZoomViewToRect(ViewState *view, const IntRect &client);

// Puts the centre on a scaled point, as far as the image reaches. Returns whether the view moved.
bool SetViewCenter(ViewState *view, double x, double y);

// What the display shows, with the centre in whole scaled pixels.
PreviewGeometry GeometryOfView(const ViewState &view);

// The document pixel that a client pixel shows most of, and the document pixels that a client rectangle
// touches.
ViewPoint DocumentFromClient(const ViewState &view, ViewPoint client);
IntRect DocumentRectFromClient(const ViewState &view, const IntRect &client);
// The client pixel of a document position in quarter pixels.
ViewPoint ClientFromDocument(const ViewState &view, int32_t quarterX, int32_t quarterY);

// What a scroll bar is set to. `maximum` is `minimum` when there is nothing to scroll.
struct ScrollRange {
    int32_t minimum, maximum, page, position;
};
ScrollRange HorizontalScroll(const ViewState &view);
ScrollRange VerticalScroll(const ViewState &view);

// The centre's coordinate that a scroll position stands for.
inline int32_t CenterOfScroll(int32_t position, int32_t page) {
    return position + page / 2;
}
