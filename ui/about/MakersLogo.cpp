#include "ui/about/MakersLogo.h"

#include "resources/DialogControlIds.h"
#include "ui/look/PictureButton.h"
#include "web/MakerAddresses.h"

#include <commctrl.h>

namespace {

constexpr UINT_PTR kLogoSubclassId = 1;

LRESULT CALLBACK LogoProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR) {
    switch (message) {
    case WM_NCDESTROY:
        RemoveWindowSubclass(window, LogoProc, kLogoSubclassId);
        break;
    case WM_SETCURSOR:
        SetCursor(LoadCursorA(nullptr, IDC_HAND));
        return TRUE;
    case WM_NCHITTEST: // a static without notifications answers transparent
        return HTCLIENT;
    }
    bool isClick = false;
    if (TakePress(window, message, lParam, &isClick)) {
        if (isClick)
            OpenAddress(GetParent(window), kWebAddress);
        return 0;
    }
    return DefSubclassProc(window, message, wParam, lParam);
}

} // namespace

void SubclassMakersLogo(HWND dialog) {
    if (const HWND logo = GetDlgItem(dialog, kMakerLogoId))
        SetWindowSubclass(logo, LogoProc, kLogoSubclassId, 0);
}
