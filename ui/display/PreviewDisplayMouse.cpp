#include "ui/display/PreviewDisplayMouse.h"

#include "diag/ErrorReport.h"
#include "ui/display/PreviewDisplay.h"
#include "ui/display/PreviewDisplayCursor.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr uint32_t kSiteMouseMove = 484, kSiteCaptureChanged = 615, kSiteButtonDown = 1298;
// A panning asks for a new preview at most this often: each request makes the task start anew.
constexpr DWORD kPanRequestMs = 100;
constexpr LONG kMarkReach = 12; // of a mark around its light, client
constexpr int32_t kAntsPeriod = 8;

void ReportMouseError(uint32_t site, const char *message) {
    ReportError({site, kDebugMessage, 0}, kStopIcon, kTitleUnexpected, "%s", message);
}

POINT ToScreen(POINT client) {
    ClientToScreen(gPreviewDisplay.window, &client);
    return client;
}

POINT ToClient(POINT screen) {
    ScreenToClient(gPreviewDisplay.window, &screen);
    return screen;
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

IntRect RectOfPoints(POINT a, POINT b) {
    return {std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x) + 1, std::max(a.y, b.y) + 1};
}

void InvalidateClient(const IntRect &rect, LONG margin) {
    const RECT area = {rect.left - margin, rect.top - margin, rect.right + margin, rect.bottom + margin};
    InvalidateRect(gPreviewDisplay.window, &area, FALSE);
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
    gViewToolInUse = 0;
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
    const bool due = finished || GetTickCount() - mouse.panRequestTime >= kPanRequestMs;
    if (CenterPreview(x, y, due) && due)
        mouse.panRequestTime = GetTickCount();
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
    if (changed)
        AskForPreview();
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

LightMarks MarksOfRectangle(int32_t mode, const IntRect &client) {
    return {true, mode, -1, true, DocumentRectFromClient(gViewTools.view, client)};
}

LightMarks MarksAt(int32_t mode, POINT client) {
    const ViewPoint point = DocumentFromClient(gViewTools.view, {client.x, client.y});
    return {true, mode, FindLightSourceAt(point.x, point.y, gViewTools.view.zoom, mode), false, {}};
}

// The mode of the gesture that is being made or would start now.
int32_t PresentHideMode() {
    int32_t state = gPreviewDisplay.mouse.state;
    if (state == kMouseIdle && !MouseStateOfPress(EffectiveViewTool(), gPreviewDisplay.modifiers, &state))
        return kNoHideMode;
    return HideModeOfMouseState(state);
}

LightMarks PresentMarks() {
    const int32_t mode = PresentHideMode();
    if (mode == kNoHideMode || !gViewTools.tableReady)
        return {};
    IntRect rect;
    if (DragRectangle(&rect))
        return MarksOfRectangle(mode, rect);
    const bool pressed = gPreviewDisplay.mouse.state != kMouseIdle;
    if (!pressed && !gPreviewDisplay.leaveTracked)
        return {};
    return MarksAt(mode, ToClient(pressed ? gPreviewDisplay.mouse.press : gPreviewDisplay.mouse.current));
}

void InvalidateMark(ViewPoint client, void *) {
    InvalidateClient({client.x, client.y, client.x + 1, client.y + 1}, kMarkReach);
}

bool SameMarks(const LightMarks &a, const LightMarks &b) {
    return a.active == b.active && a.mode == b.mode && a.single == b.single && a.inRect == b.inRect &&
           a.rect.left == b.rect.left && a.rect.top == b.rect.top && a.rect.right == b.rect.right &&
           a.rect.bottom == b.rect.bottom;
}

} // namespace

uint32_t EffectiveViewTool() {
    return gPreviewDisplay.spaceHeld ? kToolPan : gViewTools.tool;
}

bool DragRectangle(IntRect *rect) {
    const DisplayMouse &mouse = gPreviewDisplay.mouse;
    if (!IsRectangleState(mouse.state) || !mouse.farEnough)
        return false;
    *rect = RectOfPoints(ToClient(mouse.press), ToClient(mouse.current));
    return true;
}

void UpdateLightMarks() {
    const LightMarks marks = PresentMarks();
    if (SameMarks(marks, gPreviewDisplay.marks))
        return;
    VisitMarkedLights(gPreviewDisplay.marks, gViewTools.view, InvalidateMark, nullptr);
    gPreviewDisplay.marks = marks;
    VisitMarkedLights(marks, gViewTools.view, InvalidateMark, nullptr);
}

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
    gViewToolInUse = 1;
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
