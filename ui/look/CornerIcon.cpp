#include "ui/look/CornerIcon.h"

#include "resources/DialogControlIds.h"

#include <commctrl.h>

namespace {

constexpr UINT_PTR kCornerSubclassId = 1;

// The system sizes a window when its own corner is pressed.
void SizeDialog(HWND icon) {
    const HWND dialog = GetParent(icon);
    POINT cursor = {};
    GetCursorPos(&cursor);
    ReleaseCapture();
    if (!IsZoomed(dialog))
        PostMessageA(dialog, WM_NCLBUTTONDOWN, HTBOTTOMRIGHT,
                     MAKELPARAM(static_cast<WORD>(cursor.x), static_cast<WORD>(cursor.y)));
}

LRESULT CALLBACK CornerProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR) {
    switch (message) {
    case WM_NCDESTROY:
        RemoveWindowSubclass(window, CornerProc, kCornerSubclassId);
        break;
    case WM_NCHITTEST: // a static without notifications answers transparent
        return HTCLIENT;
    case WM_SETCURSOR:
        if (IsZoomed(GetParent(window)))
            break;
        SetCursor(LoadCursorA(nullptr, IDC_SIZENWSE));
        return TRUE;
    case WM_LBUTTONDOWN:
        SizeDialog(window);
        return 0;
    }
    return DefSubclassProc(window, message, wParam, lParam);
}

} // namespace

void SubclassCornerIcon(HWND dialog) {
    if (const HWND icon = GetDlgItem(dialog, kCornerIconId))
        SetWindowSubclass(icon, CornerProc, kCornerSubclassId, 0);
}
