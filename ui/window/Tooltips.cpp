#include "ui/window/Tooltips.h"

#include <commctrl.h>

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
