#include "ui/window/DropDownList.h"

#include <commctrl.h>

namespace {

constexpr UINT_PTR kListSubclassId = 6;

LRESULT CALLBACK ListProc(HWND combo, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id, DWORD_PTR) {
    if (message == WM_NCDESTROY)
        RemoveWindowSubclass(combo, ListProc, id);
    if (message == WM_MOUSEWHEEL && !IsDropDownListOpen(combo))
        return SendMessageW(GetParent(combo), message, wParam, lParam);
    return DefSubclassProc(combo, message, wParam, lParam);
}

} // namespace

void SubclassDropDownList(HWND combo) {
    if (combo)
        SetWindowSubclass(combo, ListProc, kListSubclassId, 0);
}

bool IsDropDownListOpen(HWND combo) {
    return combo && SendMessageW(combo, CB_GETDROPPEDSTATE, 0, 0) != 0;
}
