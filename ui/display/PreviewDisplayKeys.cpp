#include "ui/display/PreviewDisplayKeys.h"

#include "ui/display/PreviewDisplayCursor.h"
#include "ui/display/PreviewDisplayMouse.h"
#include "ui/display/PreviewDisplayState.h"
#include "ui/view/ViewTools.h"

#include <algorithm>
#include <windowsx.h>

namespace {

constexpr int32_t kSmallSteps = 10; // arrow steps, and wheel turns, that make up a view

int32_t ViewWidth() {
    return gViewTools.view.display.right - gViewTools.view.display.left;
}

int32_t ViewHeight() {
    return gViewTools.view.display.bottom - gViewTools.view.display.top;
}

int32_t SmallStep(int32_t extent) {
    return std::max(1, extent / kSmallSteps);
}

void PageBy(int32_t direction) {
    if (GetKeyState(VK_CONTROL) & 0x8000)
        ScrollPreview(direction * ViewWidth(), 0);
    else
        ScrollPreview(0, direction * ViewHeight());
}

void ShowCorner(bool last) {
    const IntRect scaled = ScaledImage(CurrentPreviewGeometry());
    if (last)
        CenterPreview(scaled.right, scaled.bottom);
    else
        CenterPreview(scaled.left, scaled.top);
}

// Pixels to scroll for a turn; what is left of it waits for the next.
int32_t ScrolledByWheel(int32_t extent, int delta, int32_t *rest) {
    *rest += SmallStep(extent) * delta;
    const int32_t pixels = *rest / WHEEL_DELTA;
    *rest -= pixels * WHEEL_DELTA;
    return pixels;
}

// Wheels that report parts of a turn zoom after a whole one.
void ZoomByWheel(int delta, POINT screen) {
    int32_t &rest = gPreviewDisplay.wheelRest;
    if ((rest > 0) != (delta > 0))
        rest = 0;
    rest += delta;
    const int32_t steps = rest / WHEEL_DELTA;
    if (steps == 0)
        return;
    rest -= steps * WHEEL_DELTA;
    double zoom = gViewTools.view.zoom;
    for (int32_t i = 0; i < std::min(std::abs(steps), kZoomStepCount); ++i)
        zoom = LookUpZoom(steps > 0 ? kZoomStepIn : kZoomStepOut, zoom);
    ScreenToClient(gPreviewDisplay.window, &screen);
    SetZoomAbout(zoom, {screen.x, screen.y});
}

} // namespace

bool OnDisplayKeyDown(WPARAM key) {
    switch (key) {
    case VK_LEFT:
        ScrollPreview(SmallStep(ViewWidth()), 0);
        return true;
    case VK_RIGHT:
        ScrollPreview(-SmallStep(ViewWidth()), 0);
        return true;
    case VK_UP:
        ScrollPreview(0, SmallStep(ViewHeight()));
        return true;
    case VK_DOWN:
        ScrollPreview(0, -SmallStep(ViewHeight()));
        return true;
    case VK_PRIOR:
        PageBy(1);
        return true;
    case VK_NEXT:
        PageBy(-1);
        return true;
    case VK_HOME:
        ShowCorner(false);
        return true;
    case VK_END:
        ShowCorner(true);
        return true;
    case VK_ESCAPE:
        return CancelPreviewGesture();
    case VK_SPACE:
    case VK_CONTROL:
    case VK_MENU:
        OnPreviewModifierKey(key, true);
        return true;
    }
    return false;
}

// The menu key acts when it comes up; the class procedure, which would see to it, does not get the message.
void OnDisplayKeyUp(WPARAM key) {
    if (key == VK_APPS)
        SendMessageA(gPreviewDisplay.window, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(gPreviewDisplay.window),
                     -1);
    else
        OnPreviewModifierKey(key, false);
}

void OnDisplayWheel(int delta, UINT keys, POINT screen, bool sideways) {
    if (gPreviewDisplay.mouse.state != kMouseIdle)
        return;
    if (sideways)
        ScrollPreview(-ScrolledByWheel(ViewWidth(), delta, &gPreviewDisplay.restX), 0);
    else if (keys & MK_CONTROL)
        ScrollPreview(0, ScrolledByWheel(ViewHeight(), delta, &gPreviewDisplay.restY));
    else if (keys & MK_SHIFT)
        ScrollPreview(ScrolledByWheel(ViewWidth(), delta, &gPreviewDisplay.restX), 0);
    else
        ZoomByWheel(delta, screen);
}

bool OnPreviewWheel(WPARAM wheel, LPARAM screenPoint) {
    const POINT screen = {GET_X_LPARAM(screenPoint), GET_Y_LPARAM(screenPoint)};
    RECT rect = {};
    if (!gPreviewDisplay.window || !GetWindowRect(gPreviewDisplay.window, &rect) || !PtInRect(&rect, screen))
        return false;
    OnDisplayWheel(GET_WHEEL_DELTA_WPARAM(wheel), GET_KEYSTATE_WPARAM(wheel), screen, false);
    return true;
}
