#include "ui/window/Tooltips.h"

#include "ui/window/WindowPlacement.h"

#include <commctrl.h>
#include <initializer_list>

namespace {

constexpr UINT_PTR kTooltipSubclassId = 1;
constexpr LONG kGap = 4; // pixels between a control and its tip
constexpr int kMostUsed = 3;

HWND ControlOfTip(HWND tooltipWindow) {
    TTTOOLINFOW tool = {};
    tool.cbSize = TTTOOLINFOW_V1_SIZE;
    return SendMessageW(tooltipWindow, TTM_GETCURRENTTOOLW, 0, reinterpret_cast<LPARAM>(&tool))
               ? reinterpret_cast<HWND>(tool.uId)
               : nullptr;
}

// The list of a combo box is a window of its own.
bool OpenList(HWND control, RECT *rect) {
    COMBOBOXINFO info = {};
    info.cbSize = sizeof info;
    return SendMessageW(control, CB_GETDROPPEDSTATE, 0, 0) && GetComboBoxInfo(control, &info) &&
           GetWindowRect(info.hwndList, rect);
}

int UsedRects(HWND control, RECT *used) {
    int count = 0;
    const HWND focus = GetFocus();
    for (const HWND window : {control, focus})
        if (window && GetWindowRect(window, &used[count]))
            ++count;
    if (focus && GetAncestor(focus, GA_PARENT) == GetParent(control) && OpenList(focus, &used[count]))
        ++count;
    return count;
}

bool IsClear(const RECT &tip, const RECT *used, int usedCount) {
    RECT both = {};
    for (int i = 0; i < usedCount; ++i)
        if (IntersectRect(&both, &tip, &used[i]))
            return false;
    return true;
}

// Below the control where no place is clear.
POINT PlaceOfTooltip(SIZE size, const RECT &control, const RECT &work, const RECT *used, int usedCount) {
    const POINT corners[] = {{control.left, control.bottom + kGap},
                             {control.left, control.top - kGap - size.cy},
                             {control.right + kGap, control.top},
                             {control.left - kGap - size.cx, control.top}};
    for (const POINT &corner : corners) {
        const RECT tip = MoveIntoArea({corner.x, corner.y, corner.x + size.cx, corner.y + size.cy}, work);
        if (IsClear(tip, used, usedCount))
            return {tip.left, tip.top};
    }
    return corners[0];
}

void MoveClear(HWND tooltipWindow, WINDOWPOS *position) {
    const HWND control = ControlOfTip(tooltipWindow);
    MONITORINFO monitor = {};
    monitor.cbSize = sizeof monitor;
    RECT rect = {}, used[kMostUsed], tip = {};
    if (!IsWindow(control) || !GetWindowRect(control, &rect) ||
        !GetMonitorInfoW(MonitorFromRect(&rect, MONITOR_DEFAULTTONEAREST), &monitor))
        return;
    GetWindowRect(tooltipWindow, &tip);
    const SIZE size = position->flags & SWP_NOSIZE ? SIZE{tip.right - tip.left, tip.bottom - tip.top}
                                                   : SIZE{position->cx, position->cy};
    const POINT place = PlaceOfTooltip(size, rect, monitor.rcWork, used, UsedRects(control, used));
    position->x = place.x;
    position->y = place.y;
    position->flags &= ~static_cast<UINT>(SWP_NOMOVE);
}

bool IsShownOrMoved(UINT flags) {
    return !(flags & SWP_HIDEWINDOW) && ((flags & SWP_SHOWWINDOW) || !(flags & SWP_NOMOVE));
}

LRESULT CALLBACK TooltipProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR) {
    if (message == WM_NCDESTROY)
        RemoveWindowSubclass(window, TooltipProc, kTooltipSubclassId);
    const LRESULT result = DefSubclassProc(window, message, wParam, lParam);
    WINDOWPOS *position = reinterpret_cast<WINDOWPOS *>(lParam);
    if (message == WM_WINDOWPOSCHANGING && position && IsShownOrMoved(position->flags))
        MoveClear(window, position);
    return result;
}

} // namespace

void KeepTooltipsClear(HWND tooltipWindow) {
    SetWindowSubclass(tooltipWindow, TooltipProc, kTooltipSubclassId, 0);
}

void AddTooltip(HWND dialog, HWND tooltipWindow, int controlId, const char *text) {
    const HWND control = GetDlgItem(dialog, controlId);
    if (!control)
        return;
    TTTOOLINFOA tool = {};
    // The smallest form: common controls before version 6 refuse the one with the last field.
    tool.cbSize = TTTOOLINFOA_V1_SIZE;
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    tool.hwnd = dialog;
    tool.uId = reinterpret_cast<UINT_PTR>(control);
    tool.lpszText = const_cast<char *>(text);
    SendMessageA(tooltipWindow, TTM_ADDTOOLA, 0, reinterpret_cast<LPARAM>(&tool));
}

void ChangeTooltip(HWND dialog, HWND tooltipWindow, int controlId, wchar_t *text) {
    TTTOOLINFOW tool = {};
    tool.cbSize = TTTOOLINFOW_V1_SIZE;
    tool.hwnd = dialog;
    tool.uId = reinterpret_cast<UINT_PTR>(GetDlgItem(dialog, controlId));
    tool.lpszText = text;
    SendMessageW(tooltipWindow, TTM_UPDATETIPTEXTW, 0, reinterpret_cast<LPARAM>(&tool));
}
