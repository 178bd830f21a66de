// Tools of the preview, the mouse states that a press with them enters, and the cursor that each shows.
#pragma once

#include <cstdint>

constexpr uint32_t kToolNone = 0, kToolPan = 1, kToolZoom = 2, kToolHide = 3, kToolShow = 4;

struct ViewModifiers {
    bool alt, ctrl;
};

// State of the mouse on the display, set when the left button goes down on it. 3 is not entered by any press.
enum MouseState : int32_t {
    kMouseIdle = 0,
    kMouseNoTool = 1,
    kMouseZoomOut = 2,
    kMousePan = 4,
    kMouseZoomIn = 5, // from here on a rectangle is dragged
    kMouseHide = 6,
    kMouseHideAlt = 7,
    kMouseShow = 8,
    kMouseShowAlt = 9,
};
constexpr int32_t kLastMouseState = 9;

inline bool IsMouseState(int32_t state) {
    return state >= kMouseIdle && state <= kLastMouseState;
}
inline bool IsRectangleState(int32_t state) {
    return state >= kMouseZoomIn && state <= kLastMouseState;
}

// False, with *state unchanged, for a value that is no tool.
bool MouseStateOfPress(uint32_t tool, ViewModifiers modifiers, int32_t *state);

enum DisplayCursor : int32_t {
    kCursorArrow,
    kCursorOpenHand,
    kCursorClosedHand,
    kCursorZoomIn,
    kCursorZoomOut,
    kCursorNoZoom,
    kCursorHide,
    kCursorShow,
};
constexpr int kDisplayCursorCount = 8;

// The cursor of a display on which no button is down; an arrow for a value that is no tool.
DisplayCursor ChooseCursor(uint32_t tool, ViewModifiers modifiers, double zoom);
// The cursor while a mouse state lasts; `idle` is what ChooseCursor gave for it.
DisplayCursor ChooseDragCursor(int32_t state, DisplayCursor idle);
