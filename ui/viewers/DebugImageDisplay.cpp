#include "ui/viewers/DebugImageDisplay.h"

#include "ui/viewers/DebugImageBitmap.h"
#include "ui/viewers/DebugImagePaint.h"
#include "ui/viewers/DebugImageStatus.h"

#include <commctrl.h>
#include <cstring>
#include <windowsx.h>

namespace {

constexpr UINT_PTR kSubclassId = 2;
constexpr WPARAM kCopyChar = 3; // Ctrl+C
constexpr int kKeyPan = 40;     // pixels an arrow key

// The open display.
struct Display {
    DebugBitmap bitmap;
    DebugView view;
    int32_t choice;
    bool dragging;
    POINT dragPoint;   // where the mouse was last while dragging
    bool watchesMouse; // a message comes when it leaves
    DebugStatus status;
};
Display gDisplay;

void SetStatus(HWND display, const DebugStatus &status) {
    if (strcmp(gDisplay.status.text, status.text) == 0)
        return;
    gDisplay.status = status;
    SetWindowTextA(display, status.text);
    const RECT strip = DebugStatusStrip(display);
    InvalidateRect(display, &strip, FALSE);
}

DebugStatus DescribeAbsence() {
    DebugPicturePlace place;
    if (FindDebugPicture(gDisplay.choice, &place))
        return DebugStatus{"This picture could not be made."};
    return DebugStatus{"No images were kept for this run."};
}

void ShowPictureStatus(HWND display) {
    SetStatus(display, gDisplay.bitmap.context ? DescribeDebugPicture(gDisplay.choice, gDisplay.bitmap.place)
                                               : DescribeAbsence());
}

void ShowPixelStatus(HWND display, POINT point) {
    int column, row;
    if (!gDisplay.bitmap.context || !FindDebugPixel(gDisplay.view, point.x, point.y, &column, &row)) {
        ShowPictureStatus(display);
        return;
    }
    SetStatus(display, DescribeDebugPixel(gDisplay.choice, gDisplay.bitmap.place, column, row,
                                          DebugBitmapPixel(gDisplay.bitmap, column, row)));
}

void Redraw(HWND display) {
    InvalidateRect(display, nullptr, FALSE);
}

void Pan(HWND display, int dx, int dy) {
    PanDebugView(&gDisplay.view, dx, dy);
    Redraw(display);
}

void FollowSize(HWND display) {
    const RECT area = DebugPictureArea(display);
    ResizeDebugView(&gDisplay.view, area.right, area.bottom);
    Redraw(display);
}

void WatchMouse(HWND display) {
    TRACKMOUSEEVENT wish = {sizeof wish, TME_LEAVE, display, 0};
    gDisplay.watchesMouse = gDisplay.watchesMouse || TrackMouseEvent(&wish);
}

void BeginDrag(HWND display, POINT point) {
    SetFocus(display);
    SetCapture(display);
    gDisplay.dragging = true;
    gDisplay.dragPoint = point;
}

void MoveMouse(HWND display, POINT point) {
    WatchMouse(display);
    if (gDisplay.dragging) {
        Pan(display, point.x - gDisplay.dragPoint.x, point.y - gDisplay.dragPoint.y);
        gDisplay.dragPoint = point;
    }
    ShowPixelStatus(display, point);
}

// One step in or out, from `from` window point; the dialog hears of it.
void StepZoom(HWND display, int step, POINT from) {
    const int zoom = gDisplay.view.zoom + step;
    if (zoom < 0 || zoom >= kDebugZooms)
        return;
    ZoomDebugView(&gDisplay.view, static_cast<DebugZoom>(zoom), from.x, from.y);
    Redraw(display);
    SendMessageA(GetParent(display), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(display), kDebugZoomChanged),
                 reinterpret_cast<LPARAM>(display));
}

POINT Middle() {
    return {gDisplay.view.windowWidth / 2, gDisplay.view.windowHeight / 2};
}

void TurnWheel(HWND display, int delta, POINT point) {
    ScreenToClient(display, &point);
    if (delta != 0)
        StepZoom(display, delta > 0 ? 1 : -1, point);
}

bool PressKey(HWND display, WPARAM key) {
    switch (key) {
    case VK_LEFT:
        Pan(display, kKeyPan, 0);
        return true;
    case VK_RIGHT:
        Pan(display, -kKeyPan, 0);
        return true;
    case VK_UP:
        Pan(display, 0, kKeyPan);
        return true;
    case VK_DOWN:
        Pan(display, 0, -kKeyPan);
        return true;
    default:
        return false;
    }
}

bool TypeCharacter(HWND display, WPARAM character) {
    switch (character) {
    case kCopyChar:
        CopyDebugPicture(display);
        return true;
    case '+':
        StepZoom(display, 1, Middle());
        return true;
    case '-':
        StepZoom(display, -1, Middle());
        return true;
    default:
        return false;
    }
}

void Paint(HWND display) {
    PaintDebugDisplay(display, gDisplay.bitmap, gDisplay.view, gDisplay.status.text);
}

void LeaveMouse(HWND display) {
    gDisplay.watchesMouse = false;
    ShowPictureStatus(display);
}

void Release(HWND display, UINT_PTR id, SUBCLASSPROC procedure) {
    FreeDebugBitmap(&gDisplay.bitmap);
    gDisplay = Display{};
    RemoveWindowSubclass(display, procedure, id);
}

// Keys and mouse. False: the control's own procedure takes the message.
bool HandleInput(HWND display, UINT message, WPARAM wParam, LPARAM lParam) {
    const POINT point = {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
    switch (message) {
    case WM_LBUTTONDOWN:
        BeginDrag(display, point);
        return true;
    case WM_MOUSEMOVE:
        MoveMouse(display, point);
        return true;
    case WM_LBUTTONUP:
        ReleaseCapture();
        return true;
    case WM_CAPTURECHANGED:
        gDisplay.dragging = false;
        return true;
    case WM_MOUSELEAVE:
        LeaveMouse(display);
        return true;
    case WM_MOUSEWHEEL:
        TurnWheel(display, GET_WHEEL_DELTA_WPARAM(wParam), point);
        return true;
    case WM_KEYDOWN:
        return PressKey(display, wParam);
    case WM_CHAR:
        return TypeCharacter(display, wParam);
    default:
        return false;
    }
}

LRESULT CALLBACK DisplayProc(HWND display, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                             DWORD_PTR) {
    if (HandleInput(display, message, wParam, lParam))
        return 0;
    switch (message) {
    case WM_PAINT:
        Paint(display);
        return 0;
    case WM_ERASEBKGND: // everything is painted, so nothing is cleared before
        return TRUE;
    case WM_SIZE:
        FollowSize(display);
        return 0;
    case WM_SETTEXT: // kept, but not painted at once as the static control would
        return IsWindowUnicode(display) ? DefWindowProcW(display, message, wParam, lParam)
                                        : DefWindowProcA(display, message, wParam, lParam);
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
        return 0;
    case WM_GETDLGCODE:
        return DLGC_WANTARROWS | DLGC_WANTCHARS;
    case WM_NCDESTROY:
        Release(display, id, DisplayProc);
        break;
    default:
        break;
    }
    return DefSubclassProc(display, message, wParam, lParam);
}

} // namespace

void AttachDebugDisplay(HWND display) {
    gDisplay = Display{};
    if (SetWindowSubclass(display, DisplayProc, kSubclassId, 0))
        FollowSize(display);
}

void ShowDebugPicture(HWND display, int32_t choice) {
    FreeDebugBitmap(&gDisplay.bitmap);
    gDisplay.choice = choice;
    MakeDebugBitmap(choice, &gDisplay.bitmap);
    const bool sameSize = gDisplay.view.pictureWidth == gDisplay.bitmap.width &&
                          gDisplay.view.pictureHeight == gDisplay.bitmap.height;
    gDisplay.view.pictureWidth = gDisplay.bitmap.width;
    gDisplay.view.pictureHeight = gDisplay.bitmap.height;
    if (!sameSize) // else the same part stays in view, to be compared
        CentreDebugView(&gDisplay.view);
    ShowPictureStatus(display);
    Redraw(display);
}

void SetDebugZoom(HWND display, DebugZoom zoom) {
    const POINT middle = Middle();
    ZoomDebugView(&gDisplay.view, zoom, middle.x, middle.y);
    Redraw(display);
}

DebugZoom GetDebugZoom() {
    return gDisplay.view.zoom;
}

void CopyDebugPicture(HWND display) {
    CopyDebugBitmap(display, gDisplay.bitmap);
}
