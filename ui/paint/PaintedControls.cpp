#include "ui/paint/PaintedControls.h"

#include "ui/paint/PaintedButtons.h"
#include "ui/paint/PaintedScrollBar.h"
#include "ui/window/Palette.h"

#include <algorithm>
#include <commctrl.h>
#include <cwchar>
#include <iterator>
#include <richedit.h>
#include <uxtheme.h>

namespace {

constexpr UINT_PTR kPaintSubclassId = 21;
constexpr int kClassNameCapacity = 32;

using Painter = void (*)(HWND control, HDC dc);

enum Kind : DWORD_PTR { kName, kGroup, kCheckBox, kPushButton, kList };

struct Painting {
    Painter paint;
    bool isAlways;   // not only in the dark look
    bool isBuffered; // covers its whole window
};

constexpr Painting kPaintings[] = {{PaintName, true, true},
                                   {PaintGroup, true, false},
                                   {PaintCheckBox, true, true},
                                   {PaintPushButton, false, true},
                                   {PaintDropDownList, false, true}};

bool IsPaintedNow(const Painting &painting) {
    return painting.isAlways || IsDarkLook();
}

bool PaintBuffered(HWND control, HDC dc, Painter paint) {
    RECT client = {};
    GetClientRect(control, &client);
    const HDC memory = CreateCompatibleDC(dc);
    const HBITMAP bitmap = memory ? CreateCompatibleBitmap(dc, client.right, client.bottom) : nullptr;
    if (bitmap) {
        const HGDIOBJ oldBitmap = SelectObject(memory, bitmap);
        paint(control, memory);
        BitBlt(dc, 0, 0, client.right, client.bottom, memory, 0, 0, SRCCOPY);
        SelectObject(memory, oldBitmap);
        DeleteObject(bitmap);
    }
    if (memory)
        DeleteDC(memory);
    return bitmap != nullptr;
}

void Paint(HWND control, const Painting &painting) {
    PAINTSTRUCT paint;
    const HDC dc = BeginPaint(control, &paint);
    if (!dc)
        return;
    if (!painting.isBuffered || !PaintBuffered(control, dc, painting.paint))
        painting.paint(control, dc);
    EndPaint(control, &paint);
}

// Some controls draw a new state at once, in the system's way, instead of waiting for WM_PAINT.
bool MayHaveDrawn(UINT message, WPARAM wParam) {
    constexpr UINT messages[] = {WM_ENABLE,       WM_SETTEXT,      WM_UPDATEUISTATE, WM_SETFOCUS,
                                 WM_KILLFOCUS,    WM_LBUTTONDOWN,  WM_LBUTTONUP,     WM_LBUTTONDBLCLK,
                                 WM_MOUSELEAVE,   WM_KEYDOWN,      WM_KEYUP,         WM_CAPTURECHANGED,
                                 BM_SETCHECK,     BM_SETSTATE,     BM_SETSTYLE,      CB_SETCURSEL,
                                 CB_SHOWDROPDOWN, CB_DELETESTRING, CB_RESETCONTENT,  WM_COMMAND};
    if (message == WM_MOUSEMOVE)
        return (wParam & MK_LBUTTON) != 0;
    return std::find(std::begin(messages), std::end(messages), message) != std::end(messages);
}

LRESULT CALLBACK PaintedProc(HWND control, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                             DWORD_PTR kind) {
    if (message == WM_NCDESTROY)
        RemoveWindowSubclass(control, PaintedProc, id);
    const Painting &painting = kPaintings[kind];
    if (!IsPaintedNow(painting))
        return DefSubclassProc(control, message, wParam, lParam);
    switch (message) {
    case WM_ERASEBKGND:
        return 1;
    case WM_PAINT:
        Paint(control, painting);
        return 0;
    case WM_PRINTCLIENT:
        painting.paint(control, reinterpret_cast<HDC>(wParam));
        return 0;
    }
    const LRESULT result = DefSubclassProc(control, message, wParam, lParam);
    if (MayHaveDrawn(message, wParam))
        InvalidateRect(control, nullptr, FALSE);
    return result;
}

bool HasClass(HWND control, const wchar_t *name) {
    wchar_t found[kClassNameCapacity] = L"";
    GetClassNameW(control, found, kClassNameCapacity);
    return lstrcmpiW(found, name) == 0;
}

void DressAs(HWND control, Kind kind) {
    SetWindowSubclass(control, PaintedProc, kPaintSubclassId, kind);
}

void DressButton(HWND button) {
    const LONG type = GetWindowLongW(button, GWL_STYLE) & BS_TYPEMASK;
    if (type == BS_GROUPBOX && GetWindowTextLengthW(button) > 0)
        DressAs(button, kGroup);
    else if (type == BS_AUTOCHECKBOX)
        DressAs(button, kCheckBox);
    else if (type == BS_PUSHBUTTON || type == BS_DEFPUSHBUTTON)
        DressAs(button, kPushButton);
}

// One with an underlined letter, or one that is greyed, which the system does in a colour of its own.
void DressText(HWND name) {
    wchar_t text[kClassNameCapacity * 2] = L"";
    GetWindowTextW(name, text, std::size(text));
    const LONG style = GetWindowLongW(name, GWL_STYLE);
    const bool isText = (style & SS_TYPEMASK) == SS_LEFT && !(style & (SS_CENTERIMAGE | SS_NOPREFIX));
    if (isText && (wcschr(text, L'&') || !IsWindowEnabled(name)))
        DressAs(name, kName);
}

// Only one without a theme takes colours.
void UseTheme(HWND control) {
    const wchar_t *const theme = IsDarkLook() ? L"" : nullptr;
    SetWindowTheme(control, theme, theme);
}

void DressProgress(HWND bar) {
    UseTheme(bar);
    SendMessageW(bar, PBM_SETBKCOLOR, 0,
                 static_cast<LPARAM>(IsDarkLook() ? ColorOf(kFieldColor) : CLR_DEFAULT));
    SendMessageW(bar, PBM_SETBARCOLOR, 0,
                 static_cast<LPARAM>(IsDarkLook() ? ColorOf(kAccentColor) : CLR_DEFAULT));
}

void DressControl(HWND control) {
    if (HasClass(control, L"Button"))
        DressButton(control);
    else if (HasClass(control, L"Static"))
        DressText(control);
    else if (HasClass(control, L"ComboBox"))
        DressAs(control, kList);
    else if (HasClass(control, L"ScrollBar"))
        DressScrollBar(control);
    else if (HasClass(control, MSFTEDIT_CLASS))
        SendMessageW(control, EM_SETBKGNDCOLOR, 0, static_cast<LPARAM>(ColorOf(kFieldColor)));
    else if (HasClass(control, PROGRESS_CLASSW))
        DressProgress(control);
}

void DrawThumb(HDC dc, HWND trackbar, bool isPressed) {
    RECT thumb = {};
    SendMessageW(trackbar, TBM_GETTHUMBRECT, 0, reinterpret_cast<LPARAM>(&thumb));
    const LONG point = (thumb.right - thumb.left) / 2; // ends in a point, as the system's does
    const RECT body = {thumb.left, thumb.top, thumb.right, thumb.bottom - point};
    const PaletteColor color = !IsWindowEnabled(trackbar) ? kGreyTextColor
                               : isPressed                ? kHighlightColor
                                                          : kAccentColor;
    FillWith(dc, body, color);
    for (LONG i = 0; i < point; ++i)
        FillWith(dc, {thumb.left + i, body.bottom + i, thumb.right - i, body.bottom + i + 1}, color);
}

void DrawChannel(HDC dc, HWND trackbar) {
    RECT channel = {};
    SendMessageW(trackbar, TBM_GETCHANNELRECT, 0, reinterpret_cast<LPARAM>(&channel));
    FillWith(dc, channel, kFieldColor);
    FrameWith(dc, channel, kLineColor);
}

// A part of it, or what is behind them.
LRESULT DrawTrackbar(const NMCUSTOMDRAW &draw) {
    const HWND trackbar = draw.hdr.hwndFrom;
    if (draw.dwDrawStage == CDDS_PREPAINT) {
        RECT client = {};
        GetClientRect(trackbar, &client);
        FillWith(draw.hdc, client, kFaceColor);
        return CDRF_NOTIFYITEMDRAW;
    }
    if (draw.dwItemSpec == TBCD_CHANNEL)
        DrawChannel(draw.hdc, trackbar);
    else if (draw.dwItemSpec == TBCD_THUMB)
        DrawThumb(draw.hdc, trackbar, (draw.uItemState & CDIS_SELECTED) != 0);
    return CDRF_SKIPDEFAULT;
}

} // namespace

void DressControls(HWND dialog) {
    for (HWND control = GetWindow(dialog, GW_CHILD); control; control = GetWindow(control, GW_HWNDNEXT))
        DressControl(control);
}

void DressTooltips(HWND tooltips) {
    if (!tooltips)
        return;
    UseTheme(tooltips);
    const bool isDark = IsDarkLook();
    SendMessageW(tooltips, TTM_SETTIPBKCOLOR, isDark ? ColorOf(kButtonColor) : GetSysColor(COLOR_INFOBK), 0);
    SendMessageW(tooltips, TTM_SETTIPTEXTCOLOR, isDark ? ColorOf(kTextColor) : GetSysColor(COLOR_INFOTEXT),
                 0);
}

HBRUSH OnControlColor(UINT message, HDC dc) {
    if (!IsDarkLook())
        return nullptr;
    const bool isField = message == WM_CTLCOLOREDIT || message == WM_CTLCOLORLISTBOX;
    return isField ? ControlBrush(dc, kFieldColor, kFieldTextColor)
                   : ControlBrush(dc, kFaceColor, kTextColor);
}

bool OnControlNotify(const NMHDR &notice, LRESULT *result) {
    if (notice.code != static_cast<UINT>(NM_CUSTOMDRAW) || !IsDarkLook() ||
        !HasClass(notice.hwndFrom, TRACKBAR_CLASSW))
        return false;
    *result = DrawTrackbar(reinterpret_cast<const NMCUSTOMDRAW &>(notice));
    return true;
}
