#include "ui/display/PreviewDisplayMouse.h"

#include "diag/ErrorReport.h"
#include "ui/display/PreviewDisplayCursor.h"
#include "ui/display/PreviewDisplayMarks.h"
#include "ui/display/PreviewDisplayState.h"
#include "ui/view/ViewTools.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr uint32_t kSiteMouseMove = 484, kSiteCaptureChanged = 615, kSiteButtonDown = 1298;
// A panning asks for a new preview at most this often.
constexpr DWORD kPanRequestMs = 30;
constexpr int32_t kAntsPeriod = 8;

void ReportMouseError(uint32_t site, const char *message) {
    ReportError({site, kDebugMessage, 0}, kStopIcon, kTitleUnexpected, "%s", message);
}

POINT ToScreen(POINT client) {
    ClientToScreen(gPreviewDisplay.window, &client);
    return client;
}

POINT ClampToDisplay(POINT screen) {
    RECT rect = {};
    GetWindowRect(gPreviewDisplay.window, &rect);
    return {std::clamp(screen.x, rect.left, std::max(rect.left, rect.right - 1)),
            std::clamp(screen.y, rect.top, std::max(rect.top, rect.bottom - 1))};
}

bool SamePoint(POINT a, POINT b) {
    return a.x == b.x && a.y == b.y;
}

bool IsFarEnough(POINT press, POINT point) {
    return std::abs(point.x - press.x) >= GetSystemMetrics(SM_CXDRAG) ||
           std::abs(point.y - press.y) >= GetSystemMetrics(SM_CYDRAG);
}

void StopTimers() {
    KillTimer(gPreviewDisplay.window, kRectangleTimer);
    KillTimer(gPreviewDisplay.window, kPanTimer);
}

void BecomeIdle() {
    gPreviewDisplay.mouse.state = kMouseIdle;
    RefreshDisplayCursor();
    UpdateLightMarks();
}

// The state goes first: letting go of the capture brings WM_CAPTURECHANGED at once, which must find nothing
// to cancel.
void EndGesture() {
    StopTimers();
    gPreviewDisplay.mouse.state = kMouseIdle;
    if (GetCapture() == gPreviewDisplay.window)
        ReleaseCapture();
    BecomeIdle();
}

void StartPan() {
    DisplayMouse &mouse = gPreviewDisplay.mouse;
    mouse.startX = gViewTools.view.centerX;
    mouse.startY = gViewTools.view.centerY;
    mouse.startZoom = gViewTools.view.zoom;
    mouse.panRequestTime = GetTickCount() - kPanRequestMs;
    mouse.panRequestOwed = false;
}

// The image stays under the hand, also where the hand went beyond the image's edge and comes back.
void FollowHand(bool finished) {
    DisplayMouse &mouse = gPreviewDisplay.mouse;
    if (mouse.startZoom != gViewTools.view.zoom) {
        mouse.press = mouse.current;
        StartPan();
    }
    const double x = mouse.startX - (mouse.current.x - mouse.press.x);
    const double y = mouse.startY - (mouse.current.y - mouse.press.y);
    if (CenterPreview(x, y, false))
        mouse.panRequestOwed = true;
    // Also for a hand that rests by now: what it did last is still owed.
    if (mouse.panRequestOwed && (finished || GetTickCount() - mouse.panRequestTime >= kPanRequestMs)) {
        AskForPreview();
        mouse.panRequestOwed = false;
        mouse.panRequestTime = GetTickCount();
    }
}

// Drawn from the press point to the current one, as soon as it is more than a click.
void UpdateDragRectangle(POINT screen) {
    DisplayMouse &mouse = gPreviewDisplay.mouse;
    IntRect rect;
    if (DragRectangle(&rect))
        InvalidateClient(rect, kMarkReach);
    mouse.current = screen;
    mouse.farEnough = mouse.farEnough || IsFarEnough(mouse.press, screen);
    if (DragRectangle(&rect))
        InvalidateClient(rect, kMarkReach);
    UpdateLightMarks();
}

void FinishZoomIn(POINT press, bool isClick, const IntRect &rect) {
    if (isClick)
        SetZoomAbout(LookUpZoom(kZoomStepIn, gViewTools.view.zoom), {press.x, press.y});
    else
        ZoomToClientRect(rect);
}

void FinishHide(int32_t mode, POINT press, bool isClick, const IntRect &rect) {
    if (!gViewTools.tableReady)
        return;
    const bool changed = isClick ? ChangeLightAt(gViewTools.view, {press.x, press.y}, mode)
                                 : ChangeLightsInRect(gViewTools.view, rect, mode);
    if (!changed)
        return;
    AskForPreview();
    RefreshHiddenLights();
}

// Takes the rectangle off the display and does what the state stands for; nothing for kNoReleasePoint.
void EndDragRectangle(int32_t state, POINT screen) {
    DisplayMouse &mouse = gPreviewDisplay.mouse;
    IntRect rect;
    if (DragRectangle(&rect))
        InvalidateClient(rect, kMarkReach);
    if (SamePoint(screen, kNoReleasePoint)) {
        mouse.farEnough = false;
        return;
    }
    const bool isClick = !mouse.farEnough && !IsFarEnough(mouse.press, screen);
    mouse.farEnough = false;
    const POINT press = ToClient(mouse.press);
    const IntRect dragged = RectOfPoints(press, ToClient(screen));
    if (state == kMouseZoomIn)
        FinishZoomIn(press, isClick, dragged);
    else
        FinishHide(HideModeOfMouseState(state), press, isClick, dragged);
}

void HoverDisplay(POINT screen) {
    gPreviewDisplay.mouse.current = screen;
    if (!gPreviewDisplay.leaveTracked) {
        TRACKMOUSEEVENT track = {sizeof track, TME_LEAVE, gPreviewDisplay.window, 0};
        gPreviewDisplay.leaveTracked = TrackMouseEvent(&track) != FALSE;
    }
    ReadViewModifiers();
    UpdateLightMarks();
}

} // namespace

void OnDisplayButtonDown(POINT client) {
    DisplayMouse &mouse = gPreviewDisplay.mouse;
    CancelPreviewGesture();
    SetCapture(gPreviewDisplay.window);
    SetFocus(gPreviewDisplay.window);
    ReadViewModifiers();
    mouse.press = mouse.current = ToScreen(client);
    mouse.farEnough = false;
    if (!MouseStateOfPress(EffectiveViewTool(), gPreviewDisplay.modifiers, &mouse.state)) {
        ReportMouseError(kSiteButtonDown, "Invalid Tool encountered in event WM_LBUTTONDOWN");
        EndGesture();
        return;
    }
    if (mouse.state == kMousePan) {
        StartPan();
        SetTimer(gPreviewDisplay.window, kPanTimer, kPanTimerMs, nullptr);
    } else if (IsRectangleState(mouse.state)) {
        SetTimer(gPreviewDisplay.window, kRectangleTimer, kRectangleTimerMs, nullptr);
    }
    ShowDragCursor();
    UpdateLightMarks();
}

void OnDisplayMouseMove(POINT client) {
    DisplayMouse &mouse = gPreviewDisplay.mouse;
    if (!IsMouseState(mouse.state)) {
        ReportMouseError(kSiteMouseMove, "Invalid Mouse State encountered in event WM_MOUSEMOVE");
        EndGesture();
        return;
    }
    if (mouse.state == kMouseIdle)
        HoverDisplay(ToScreen(client));
    else if (!IsRectangleState(mouse.state))
        mouse.current = ToScreen(client);
    else if (const POINT screen = ClampToDisplay(ToScreen(client)); !SamePoint(screen, mouse.current))
        UpdateDragRectangle(screen);
}

void OnDisplayMouseLeave() {
    gPreviewDisplay.leaveTracked = false;
    UpdateLightMarks();
}

void OnDisplayButtonUp(POINT client) {
    DisplayMouse &mouse = gPreviewDisplay.mouse;
    const int32_t state = mouse.state;
    if (IsRectangleState(state)) {
        const POINT screen = ClampToDisplay(ToScreen(client));
        EndDragRectangle(state, screen);
    } else if (state == kMousePan) {
        mouse.current = ToScreen(client);
        FollowHand(true);
    } else if (state == kMouseZoomOut) {
        const POINT press = ToClient(mouse.press);
        SetZoomAbout(LookUpZoom(kZoomStepOut, gViewTools.view.zoom), {press.x, press.y});
    }
    mouse.current = ToScreen(client);
    EndGesture();
}

void OnDisplayTimer(UINT_PTR timer) {
    const int32_t state = gPreviewDisplay.mouse.state;
    IntRect rect;
    if (timer == kPanTimer && state == kMousePan) {
        FollowHand(false);
    } else if (timer == kRectangleTimer && IsRectangleState(state)) {
        gPreviewDisplay.antsPhase = (gPreviewDisplay.antsPhase + 1) % kAntsPeriod;
        if (DragRectangle(&rect))
            InvalidateClient(rect, 0);
    } else {
        KillTimer(gPreviewDisplay.window, timer);
    }
}

void OnDisplayCaptureChanged() {
    DisplayMouse &mouse = gPreviewDisplay.mouse;
    if (!IsMouseState(mouse.state)) {
        ReportMouseError(kSiteCaptureChanged, "Invalid Mouse State encountered in event WM_CAPTURECHANGED");
        StopTimers();
    } else if (mouse.state == kMousePan) {
        KillTimer(gPreviewDisplay.window, kPanTimer);
        AskForPreview();
    } else if (IsRectangleState(mouse.state)) {
        KillTimer(gPreviewDisplay.window, kRectangleTimer);
        EndDragRectangle(mouse.state, kNoReleasePoint);
    }
    BecomeIdle();
}

bool CancelPreviewGesture() {
    if (!gPreviewDisplay.window || gPreviewDisplay.mouse.state == kMouseIdle)
        return false;
    if (GetCapture() == gPreviewDisplay.window)
        ReleaseCapture();
    else
        OnDisplayCaptureChanged();
    return true;
}
