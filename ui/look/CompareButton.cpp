#include "ui/look/CompareButton.h"

#include "diag/module/ModuleInstance.h"
#include "resources/DialogControlIds.h"
#include "ui/display/PreviewComparison.h"
#include "ui/look/PictureButton.h"

#include <commctrl.h>

namespace {

constexpr UINT_PTR kCompareSubclassId = 1;
constexpr RECT kUnits = {390, 393, 404, 405}; // of the template

LRESULT CALLBACK CompareProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR) {
    switch (message) {
    case WM_NCDESTROY:
        RemoveWindowSubclass(window, CompareProc, kCompareSubclassId);
        break;
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
        SetCapture(window);
        BeginComparison();
        return 0;
    case WM_LBUTTONUP:
        if (GetCapture() == window)
            ReleaseCapture();
        return 0;
    case WM_CAPTURECHANGED:
    case WM_KILLFOCUS:
        EndComparison();
        break;
    case WM_KEYDOWN:
    case WM_KEYUP:
        if (wParam != VK_SPACE)
            break;
        if (message == WM_KEYDOWN)
            BeginComparison();
        else
            EndComparison();
        return 0;
    }
    return DefSubclassProc(window, message, wParam, lParam);
}

} // namespace

void AddCompareButton(HWND dialog) {
    RECT place = kUnits;
    MapDialogRect(dialog, &place);
    const HWND button = CreateWindowExW(
        0, L"Static", L"", WS_CHILD | WS_VISIBLE | SS_ICON | SS_NOTIFY | SS_CENTERIMAGE,
        static_cast<int>(place.left), static_cast<int>(place.top), static_cast<int>(place.right - place.left),
        static_cast<int>(place.bottom - place.top), dialog,
        reinterpret_cast<HMENU>(static_cast<INT_PTR>(kCompareId)), ModuleInstance(), nullptr);
    MakePictureReachable(button); // the other procedure goes first, to have the space bar
    if (button)
        SetWindowSubclass(button, CompareProc, kCompareSubclassId, 0);
}
