#include "ui/look/PictureButton.h"

#include "ui/window/Palette.h"

#include <commctrl.h>
#include <windowsx.h>

namespace {

constexpr UINT_PTR kReachableSubclassId = 7, kReleaseSubclassId = 8;

void TellClick(HWND picture) {
    SendMessageW(GetParent(picture), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(picture), STN_CLICKED),
                 reinterpret_cast<LPARAM>(picture));
}

void DrawFocus(HWND picture) {
    RECT client = {};
    GetClientRect(picture, &client);
    if (const HDC dc = GetDC(picture)) {
        FrameWith(dc, client, kTextColor);
        ReleaseDC(picture, dc);
    }
}

// Enter would press the dialog's default button.
LRESULT DialogCode(const MSG *message) {
    const bool isEnter = message && message->message == WM_KEYDOWN && message->wParam == VK_RETURN;
    return isEnter ? DLGC_BUTTON | DLGC_WANTALLKEYS : DLGC_BUTTON;
}

LRESULT CALLBACK ReachableProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                               DWORD_PTR) {
    switch (message) {
    case WM_NCDESTROY:
        RemoveWindowSubclass(window, ReachableProc, id);
        break;
    case WM_GETDLGCODE:
        return DialogCode(reinterpret_cast<const MSG *>(lParam));
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
        InvalidateRect(window, nullptr, FALSE);
        break;
    case WM_KEYDOWN:
        if (wParam != VK_SPACE && wParam != VK_RETURN)
            break;
        TellClick(window);
        return 0;
    case WM_PAINT: {
        const LRESULT result = DefSubclassProc(window, message, wParam, lParam);
        if (GetFocus() == window)
            DrawFocus(window);
        return result;
    }
    }
    return DefSubclassProc(window, message, wParam, lParam);
}

LRESULT CALLBACK ReleaseProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                             DWORD_PTR) {
    bool isClick = false;
    if (message == WM_NCDESTROY)
        RemoveWindowSubclass(window, ReleaseProc, id);
    if (!TakePress(window, message, lParam, &isClick))
        return DefSubclassProc(window, message, wParam, lParam);
    if (isClick)
        TellClick(window);
    return 0;
}

} // namespace

bool TakePress(HWND picture, UINT message, LPARAM lParam, bool *isClick) {
    if (message == WM_LBUTTONDOWN || message == WM_LBUTTONDBLCLK) {
        SetCapture(picture);
        return true;
    }
    if (message != WM_LBUTTONUP)
        return false;
    RECT client = {};
    GetClientRect(picture, &client);
    *isClick = GetCapture() == picture && PtInRect(&client, {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
    if (GetCapture() == picture)
        ReleaseCapture();
    return true;
}

void MakePictureReachable(HWND picture) {
    if (picture && SetWindowSubclass(picture, ReachableProc, kReachableSubclassId, 0))
        SetWindowLongW(picture, GWL_STYLE, GetWindowLongW(picture, GWL_STYLE) | WS_TABSTOP);
}

void MakePictureClickOnRelease(HWND picture) {
    if (picture)
        SetWindowSubclass(picture, ReleaseProc, kReleaseSubclassId, 0);
}
