#include "ui/about/UpdateLink.h"

#include "diag/module/ModuleInstance.h"
#include "resources/DialogControlIds.h"
#include "ui/about/LinkButton.h"
#include "ui/window/ForgedMessages.h"
#include "web/MakerAddresses.h"
#include "web/UpdateNotice.h"

#include <commctrl.h>

namespace {

constexpr UINT_PTR kSubclassId = 4;
constexpr int kGap =
    8; // pixels to the button on its right, and room for a text that another scale makes wider

RECT PlaceOf(HWND dialog, int controlId) {
    RECT rect = {};
    GetWindowRect(GetDlgItem(dialog, controlId), &rect);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT *>(&rect), 2);
    return rect;
}

// What the link sends to its dialog.
LRESULT CALLBACK LinkMessagesProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                  DWORD_PTR) {
    switch (message) {
    case WM_COMMAND:
        if (LOWORD(wParam) != kUpdateLinkId)
            break;
        if (HIWORD(wParam) == BN_CLICKED)
            OpenAddress(dialog, kDownloadAddress);
        return 0;
    case WM_DRAWITEM:
        if (wParam != kUpdateLinkId)
            break;
        if (!lParam)
            return FALSE;
        DrawLink(*reinterpret_cast<const DRAWITEMSTRUCT *>(lParam));
        return TRUE;
    case WM_NCDESTROY:
        if (!IsForgedDestruction(dialog, message))
            RemoveWindowSubclass(dialog, LinkMessagesProc, id);
        break;
    default:
        break;
    }
    return DefSubclassProc(dialog, message, wParam, lParam);
}

// From below the progress bar's left end to the buttons, as far as its text goes. As high as they are.
HWND MakeLink(HWND dialog, const char *text) {
    const RECT bar = PlaceOf(dialog, kProgressId), button = PlaceOf(dialog, kHelpId);
    const int left = static_cast<int>(bar.left), top = static_cast<int>(button.top);
    const int width = static_cast<int>(button.left) - kGap - left;
    const int height = static_cast<int>(button.bottom) - top;
    const HWND link = CreateWindowExA(
        0, "Button", text, WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_OWNERDRAW, left, top, width, height,
        dialog, reinterpret_cast<HMENU>(static_cast<INT_PTR>(kUpdateLinkId)), ModuleInstance(), nullptr);
    if (!link)
        return nullptr;
    SendMessageA(link, WM_SETFONT, static_cast<WPARAM>(SendMessageA(dialog, WM_GETFONT, 0, 0)), FALSE);
    SetLinkText(link, text);
    const RECT fitted = PlaceOf(dialog, kUpdateLinkId);
    SetWindowPos(link, nullptr, 0, 0, static_cast<int>(fitted.right) - left + kGap, height,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    return link;
}

} // namespace

void AddUpdateLink(HWND dialog) {
    char notice[128];
    if (NewVersionKnown(notice, sizeof notice) && MakeLink(dialog, notice))
        SetWindowSubclass(dialog, LinkMessagesProc, kSubclassId, 0);
}
