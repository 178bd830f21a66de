#include "ui/window/DropDownList.h"

#include <algorithm>
#include <commctrl.h>
#include <cwchar>

namespace {

constexpr UINT_PTR kListSubclassId = 6;
constexpr int kLongestText = 1000;
constexpr int kTextMargin = 4; // pixels, left and right of a row's text

bool HasSelection(HWND combo) {
    return SendMessageW(combo, CB_GETCURSEL, 0, 0) >= 0;
}

RECT TextRect(HWND combo) {
    COMBOBOXINFO info = {};
    info.cbSize = sizeof info;
    return GetComboBoxInfo(combo, &info) ? info.rcItem : RECT{};
}

HGDIOBJ SelectControlFont(HWND control, HDC dc) {
    const LRESULT font = SendMessageW(control, WM_GETFONT, 0, 0);
    return SelectObject(dc, font ? reinterpret_cast<HGDIOBJ>(font) : GetStockObject(SYSTEM_FONT));
}

// Over the empty field that the control has drawn, whose colour depends on the focus and the system's look.
void DrawUnselected(HWND combo, HDC dc, const wchar_t *text) {
    RECT rect = TextRect(combo);
    if (IsRectEmpty(&rect))
        return;
    const bool isHighlighted = GetPixel(dc, rect.left + 2, rect.top + 2) == GetSysColor(COLOR_HIGHLIGHT);
    const HGDIOBJ oldFont = SelectControlFont(combo, dc);
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, GetSysColor(isHighlighted ? COLOR_HIGHLIGHTTEXT : COLOR_WINDOWTEXT));
    rect.left += kTextMargin / 2;
    DrawTextW(dc, text, -1, &rect, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
    SelectObject(dc, oldFont);
}

void OnPainted(HWND combo, HDC given, const wchar_t *text) {
    const HDC dc = given ? given : GetDC(combo);
    if (!dc)
        return;
    DrawUnselected(combo, dc, text);
    if (!given)
        ReleaseDC(combo, dc);
}

LRESULT CopyText(const wchar_t *text, WPARAM capacity, LPARAM target) {
    wchar_t *copy = reinterpret_cast<wchar_t *>(target);
    if (!copy || capacity == 0)
        return 0;
    const size_t length = std::min<size_t>(wcslen(text), capacity - 1);
    wmemcpy(copy, text, length);
    copy[length] = L'\0';
    return static_cast<LRESULT>(length);
}

LRESULT OnUnselected(HWND combo, UINT message, WPARAM wParam, LPARAM lParam, const wchar_t *text) {
    if (message == WM_GETTEXTLENGTH)
        return static_cast<LRESULT>(wcslen(text));
    if (message == WM_GETTEXT)
        return CopyText(text, wParam, lParam);
    const LRESULT result = DefSubclassProc(combo, message, wParam, lParam);
    if (message == WM_PAINT || message == WM_PRINTCLIENT)
        OnPainted(combo, reinterpret_cast<HDC>(wParam), text);
    return result;
}

bool IsAboutText(UINT message) {
    return message == WM_GETTEXT || message == WM_GETTEXTLENGTH || message == WM_PAINT ||
           message == WM_PRINTCLIENT;
}

LRESULT CALLBACK ListProc(HWND combo, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                          DWORD_PTR text) {
    if (message == WM_NCDESTROY)
        RemoveWindowSubclass(combo, ListProc, id);
    if (message == WM_MOUSEWHEEL && !IsDropDownListOpen(combo))
        return SendMessageW(GetParent(combo), message, wParam, lParam);
    if (text && IsAboutText(message) && !HasSelection(combo))
        return OnUnselected(combo, message, wParam, lParam, reinterpret_cast<const wchar_t *>(text));
    const LRESULT result = DefSubclassProc(combo, message, wParam, lParam);
    // Some controls draw their field at once when these change it, instead of waiting for WM_PAINT.
    if (text && (message == CB_SETCURSEL || message == CB_DELETESTRING || message == WM_SETFOCUS ||
                 message == WM_KILLFOCUS))
        InvalidateRect(combo, nullptr, TRUE);
    return result;
}

bool RowText(HWND combo, LRESULT row, wchar_t *text, int capacity) {
    const LRESULT length = SendMessageW(combo, CB_GETLBTEXTLEN, static_cast<WPARAM>(row), 0);
    return length >= 0 && length < capacity &&
           SendMessageW(combo, CB_GETLBTEXT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(text)) >= 0;
}

int TextWidth(HDC dc, const wchar_t *text) {
    SIZE extent = {};
    GetTextExtentPoint32W(dc, text, static_cast<int>(wcslen(text)), &extent);
    return static_cast<int>(extent.cx);
}

// Of all rows, or of one.
int WidestRow(HWND combo, LRESULT first, LRESULT end) {
    const HDC dc = GetDC(combo);
    if (!dc)
        return 0;
    const HGDIOBJ oldFont = SelectControlFont(combo, dc);
    wchar_t text[kLongestText];
    int widest = 0;
    for (LRESULT row = first; row < end; ++row)
        if (RowText(combo, row, text, kLongestText))
            widest = std::max(widest, TextWidth(dc, text));
    SelectObject(dc, oldFont);
    ReleaseDC(combo, dc);
    return widest;
}

} // namespace

void SubclassDropDownList(HWND combo, const wchar_t *unselected) {
    if (combo)
        SetWindowSubclass(combo, ListProc, kListSubclassId, reinterpret_cast<DWORD_PTR>(unselected));
}

bool IsDropDownListOpen(HWND combo) {
    return combo && SendMessageW(combo, CB_GETDROPPEDSTATE, 0, 0) != 0;
}

void FitDropDownList(HWND combo) {
    MONITORINFO monitor = {};
    monitor.cbSize = sizeof monitor;
    GetMonitorInfoW(MonitorFromWindow(combo, MONITOR_DEFAULTTONEAREST), &monitor);
    const int widest = WidestRow(combo, 0, SendMessageW(combo, CB_GETCOUNT, 0, 0));
    const int wanted = widest + 2 * kTextMargin + GetSystemMetrics(SM_CXVSCROLL);
    const int most = static_cast<int>(monitor.rcWork.right - monitor.rcWork.left);
    SendMessageW(combo, CB_SETDROPPEDWIDTH, static_cast<WPARAM>(std::min(wanted, most)), 0);
}

bool IsSelectedTextCut(HWND combo, wchar_t *text, int capacity) {
    const LRESULT row = SendMessageW(combo, CB_GETCURSEL, 0, 0);
    const RECT rect = TextRect(combo);
    return row >= 0 && RowText(combo, row, text, capacity) &&
           WidestRow(combo, row, row + 1) + kTextMargin > rect.right - rect.left;
}
