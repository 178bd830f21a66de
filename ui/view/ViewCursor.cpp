#include "ui/view/ViewCursor.h"

#include "ui/view/ViewZoom.h"

namespace {

DisplayCursor ZoomCursor(bool zoomsOut, double zoom) {
    if (zoomsOut)
        return zoom <= kMinimumZoom ? kCursorNoZoom : kCursorZoomOut;
    return zoom >= kMaximumZoom ? kCursorNoZoom : kCursorZoomIn;
}

} // namespace

bool MouseStateOfPress(uint32_t tool, ViewModifiers modifiers, int32_t *state) {
    switch (tool) {
    case kToolNone:
        *state = kMouseNoTool;
        return true;
    case kToolPan:
        *state = modifiers.alt ? kMouseZoomOut : modifiers.ctrl ? kMouseZoomIn : kMousePan;
        return true;
    case kToolZoom:
        *state = modifiers.alt ? kMouseZoomOut : kMouseZoomIn;
        return true;
    case kToolHide:
        *state = modifiers.alt ? kMouseHideAlt : kMouseHide;
        return true;
    case kToolShow:
        *state = modifiers.alt ? kMouseShowAlt : kMouseShow;
        return true;
    }
    return false;
}

DisplayCursor ChooseCursor(uint32_t tool, ViewModifiers modifiers, double zoom) {
    switch (tool) {
    case kToolPan:
        if (modifiers.alt || modifiers.ctrl)
            return ZoomCursor(modifiers.alt, zoom);
        return kCursorOpenHand;
    case kToolZoom:
        return ZoomCursor(modifiers.alt, zoom);
    case kToolHide:
        return modifiers.alt ? kCursorShow : kCursorHide;
    case kToolShow:
        return modifiers.alt ? kCursorHide : kCursorShow;
    }
    return kCursorArrow;
}

DisplayCursor ChooseDragCursor(int32_t state, DisplayCursor idle) {
    return state == kMousePan ? kCursorClosedHand : idle;
}
