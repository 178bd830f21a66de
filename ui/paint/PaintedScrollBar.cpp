#include "ui/paint/PaintedScrollBar.h"

#include "ui/window/Palette.h"

#include <algorithm>
#include <commctrl.h>
#include <cstdint>
#include <windowsx.h>

namespace {

constexpr UINT_PTR kBarSubclassId = 22, kRepeatTimer = 22;
constexpr UINT kFirstRepeatMs = 350, kRepeatMs = 60;
constexpr int kArrowPart = 4, kThumbMargin = 3; // of the bar's thickness; pixels

// Where the parts of a bar are along it, in pixels from its start.
struct Parts {
    int length, thickness, arrow;
    int thumb, thumbLength; // 0: nothing to scroll
};

// What the mouse holds. One bar at a time.
struct Hold {
    HWND bar;
    int command;        // SB_..., SB_THUMBTRACK for the thumb
    int grip, position; // where on the thumb; what was told last
};

Hold gHold = {};

bool IsVertical(HWND bar) {
    return (GetWindowLongW(bar, GWL_STYLE) & SBS_VERT) != 0;
}

SCROLLINFO InfoOf(HWND bar) {
    SCROLLINFO info = {};
    info.cbSize = sizeof info;
    info.fMask = SIF_RANGE | SIF_PAGE | SIF_POS;
    SendMessageW(bar, SBM_GETSCROLLINFO, 0, reinterpret_cast<LPARAM>(&info));
    return info;
}

int64_t Hidden(const SCROLLINFO &info) { // positions to scroll through
    return int64_t{info.nMax} - info.nMin + 1 - std::max<int64_t>(info.nPage, 1);
}

Parts PartsOf(HWND bar) {
    RECT client = {};
    GetClientRect(bar, &client);
    const bool isVertical = IsVertical(bar);
    Parts parts = {};
    parts.length = static_cast<int>(isVertical ? client.bottom : client.right);
    parts.thickness = static_cast<int>(isVertical ? client.right : client.bottom);
    parts.arrow = std::min(parts.thickness, parts.length / 3);
    const SCROLLINFO info = InfoOf(bar);
    const int64_t hidden = Hidden(info), track = parts.length - 2 * parts.arrow;
    if (hidden <= 0 || !IsWindowEnabled(bar) || track <= parts.thickness / 2)
        return parts;
    const int64_t range = hidden + info.nPage;
    parts.thumbLength =
        static_cast<int>(std::clamp<int64_t>(track * info.nPage / range, parts.thickness / 2, track));
    const int64_t at = std::clamp<int64_t>(int64_t{info.nPos} - info.nMin, 0, hidden);
    parts.thumb = parts.arrow + static_cast<int>((track - parts.thumbLength) * at / hidden);
    return parts;
}

int CommandAt(const Parts &parts, int at) {
    if (!parts.thumbLength)
        return SB_ENDSCROLL;
    if (at < parts.arrow)
        return SB_LINEUP;
    if (at >= parts.length - parts.arrow)
        return SB_LINEDOWN;
    if (at < parts.thumb)
        return SB_PAGEUP;
    return at < parts.thumb + parts.thumbLength ? SB_THUMBTRACK : SB_PAGEDOWN;
}

void Tell(HWND bar, int command, int position) {
    SendMessageW(GetParent(bar), IsVertical(bar) ? WM_VSCROLL : WM_HSCROLL,
                 MAKEWPARAM(static_cast<WORD>(command), static_cast<WORD>(position)),
                 reinterpret_cast<LPARAM>(bar));
}

int Along(HWND bar, LPARAM point) {
    return IsVertical(bar) ? GET_Y_LPARAM(point) : GET_X_LPARAM(point);
}

void OnPress(HWND bar, int at) {
    const Parts parts = PartsOf(bar);
    const int command = CommandAt(parts, at);
    if (command == SB_ENDSCROLL)
        return;
    gHold = {bar, command, at - parts.thumb, InfoOf(bar).nPos};
    SetCapture(bar);
    if (command == SB_THUMBTRACK)
        return;
    Tell(bar, command, 0);
    SetTimer(bar, kRepeatTimer, kFirstRepeatMs, nullptr);
}

void OnDrag(HWND bar, int at) {
    const Parts parts = PartsOf(bar);
    const SCROLLINFO info = InfoOf(bar);
    const int64_t room = parts.length - 2 * parts.arrow - parts.thumbLength;
    if (gHold.command != SB_THUMBTRACK || room <= 0)
        return;
    const int64_t along = std::clamp<int64_t>(at - gHold.grip - parts.arrow, 0, room);
    gHold.position = static_cast<int>(info.nMin + (along * Hidden(info) + room / 2) / room);
    Tell(bar, SB_THUMBTRACK, gHold.position);
}

// As long as the pointer is on the part that was pressed.
void OnRepeat(HWND bar) {
    POINT cursor = {};
    GetCursorPos(&cursor);
    ScreenToClient(bar, &cursor);
    SetTimer(bar, kRepeatTimer, kRepeatMs, nullptr);
    if (CommandAt(PartsOf(bar), static_cast<int>(IsVertical(bar) ? cursor.y : cursor.x)) == gHold.command)
        Tell(bar, gHold.command, 0);
}

void EndHold(HWND bar) {
    KillTimer(bar, kRepeatTimer);
    if (gHold.command == SB_THUMBTRACK)
        Tell(bar, SB_THUMBPOSITION, gHold.position); // who is told may ask for it
    gHold = {};
    Tell(bar, SB_ENDSCROLL, 0);
    InvalidateRect(bar, nullptr, FALSE);
}

// From `first` along the bar, as long and as far from the sides as said.
RECT Piece(const Parts &parts, bool isVertical, int first, int length, int margin) {
    return isVertical ? RECT{margin, first, parts.thickness - margin, first + length}
                      : RECT{first, margin, first + length, parts.thickness - margin};
}

void DrawArrow(HDC dc, const Parts &parts, bool isVertical, bool isFirst) {
    const int half = std::max(2, parts.thickness / kArrowPart), rows = half + 1;
    const int inset = (parts.arrow - rows) / 2, start = isFirst ? inset : parts.length - inset - rows;
    for (int i = 0; i < rows; ++i) {
        const int width = isFirst ? i : half - i;
        FillWith(dc, Piece(parts, isVertical, start + i, 1, parts.thickness / 2 - width),
                 parts.thumbLength ? kTextColor : kGreyTextColor);
    }
}

void DrawBar(HWND bar, HDC dc) {
    const Parts parts = PartsOf(bar);
    const bool isVertical = IsVertical(bar);
    FillWith(dc, Piece(parts, isVertical, 0, parts.length, 0), kFieldColor);
    DrawArrow(dc, parts, isVertical, true);
    DrawArrow(dc, parts, isVertical, false);
    if (parts.thumbLength)
        FillWith(dc, Piece(parts, isVertical, parts.thumb, parts.thumbLength, kThumbMargin),
                 gHold.bar == bar && gHold.command == SB_THUMBTRACK ? kAccentColor : kLineColor);
}

void PaintBar(HWND bar) {
    PAINTSTRUCT paint;
    if (const HDC dc = BeginPaint(bar, &paint)) {
        DrawBar(bar, dc);
        EndPaint(bar, &paint);
    }
}

// False: it is the control's own.
bool OnMouse(HWND bar, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
        OnPress(bar, Along(bar, lParam));
        return true;
    case WM_MOUSEMOVE:
        if (gHold.bar == bar)
            OnDrag(bar, Along(bar, lParam));
        return true;
    case WM_LBUTTONUP:
        if (gHold.bar == bar)
            ReleaseCapture();
        return true;
    case WM_CAPTURECHANGED:
        if (gHold.bar == bar)
            EndHold(bar);
        return true;
    case WM_TIMER:
        if (wParam == kRepeatTimer && gHold.bar == bar)
            OnRepeat(bar);
        return wParam == kRepeatTimer;
    }
    return false;
}

LRESULT CALLBACK BarProc(HWND bar, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id, DWORD_PTR) {
    if (message == WM_NCDESTROY) {
        if (gHold.bar == bar)
            gHold = {};
        RemoveWindowSubclass(bar, BarProc, id);
    }
    if (!IsDarkLook() || message == WM_NCDESTROY)
        return DefSubclassProc(bar, message, wParam, lParam);
    if (message == WM_ERASEBKGND)
        return 1;
    if (message == WM_PAINT) {
        PaintBar(bar);
        return 0;
    }
    if (OnMouse(bar, message, wParam, lParam))
        return 0;
    const bool isChange =
        message == SBM_SETSCROLLINFO || message == SBM_ENABLE_ARROWS || message == WM_ENABLE;
    const LRESULT result =
        DefSubclassProc(bar, message, message == SBM_SETSCROLLINFO ? FALSE : wParam, lParam);
    if (message == SBM_GETSCROLLINFO && gHold.bar == bar && gHold.command == SB_THUMBTRACK)
        reinterpret_cast<SCROLLINFO *>(lParam)->nTrackPos = gHold.position;
    if (isChange)
        InvalidateRect(bar, nullptr, FALSE);
    return result;
}

} // namespace

void DressScrollBar(HWND bar) {
    SetWindowSubclass(bar, BarProc, kBarSubclassId, 0);
}
