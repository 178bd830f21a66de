#include "ui/fields/ParameterTrackbar.h"

#include "ui/fields/ParameterEdit.h"
#include "ui/fields/ParameterValue.h"
#include "ui/window/ForgedMessages.h"

#include <commctrl.h>
#include <windowsx.h>

namespace {

constexpr UINT_PTR kTrackbarSubclassId = 1;

LRESULT CALLBACK TrackbarProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                              DWORD_PTR data) {
    ParameterControl *row = reinterpret_cast<ParameterControl *>(data);
    if (IsForgedDestruction(window, message))
        return 0;
    if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(window, TrackbarProc, kTrackbarSubclassId);
        if (row->trackbar == window)
            UnbindParameterControl(row);
        return DefSubclassProc(window, message, wParam, lParam);
    }
    if (row->trackbar != window || !IsBound(*row))
        return DefSubclassProc(window, message, wParam, lParam);
    if (message == WM_ERASEBKGND)
        return 1;
    if (message == WM_MOUSEWHEEL) // the dialog knows what lies under the pointer
        return SendMessageW(GetParent(window), message, wParam, lParam);
    if (message == WM_LBUTTONDOWN)
        lParam = OnTrackbarButtonDown(*row, lParam);
    const LRESULT result = DefSubclassProc(window, message, wParam, lParam);
    if (!IsBound(*row))
        return result;
    switch (message) {
    case WM_SETFOCUS:
        OnTrackbarSetFocus(row);
        break;
    case WM_KILLFOCUS:
        OnTrackbarKillFocus(row, reinterpret_cast<HWND>(wParam));
        break;
    case WM_MOUSEMOVE:
        if (wParam & MK_LBUTTON)
            OnTrackbarDragged(row);
        break;
    case WM_KEYDOWN:
        OnTrackbarStepped(row);
        break;
    case WM_LBUTTONUP:
        OnTrackbarButtonUp(row);
        break;
    }
    return result;
}

} // namespace

void SubclassParameterTrackbar(ParameterControl *row) {
    SetWindowSubclass(row->trackbar, TrackbarProc, kTrackbarSubclassId, reinterpret_cast<DWORD_PTR>(row));
}

void OnTrackbarSetFocus(ParameterControl *row) {
    row->editing = true;
    InvalidateRect(row->edit, nullptr, FALSE);
}

void OnTrackbarKillFocus(ParameterControl *row, HWND nextFocus) {
    if (nextFocus == row->edit)
        return;
    row->editing = false;
    InvalidateRect(row->edit, nullptr, FALSE);
}

LPARAM OnTrackbarButtonDown(const ParameterControl &row, LPARAM point) {
    ++gFieldGesture;
    RECT thumb = {};
    SendMessageA(row.trackbar, TBM_GETTHUMBRECT, 0, reinterpret_cast<LPARAM>(&thumb));
    if (PtInRect(&thumb, {GET_X_LPARAM(point), GET_Y_LPARAM(point)}))
        return MAKELPARAM((thumb.left + thumb.right) / 2, (thumb.top + thumb.bottom) / 2);
    SelectEditText(row);
    return point;
}

void OnTrackbarDragged(ParameterControl *row) {
    TakeParameterValue(row, TrackbarPosition(*row));
}

// The keys while the trackbar itself has the focus must not leave thumb and value apart.
void OnTrackbarStepped(ParameterControl *row) {
    if (TrackbarPosition(*row) != *row->value)
        TakeParameterValue(row, TrackbarPosition(*row));
}

void OnTrackbarButtonUp(ParameterControl *row) {
    OnTrackbarStepped(row);
    if (!IsBound(*row))
        return;
    ++gFieldGesture;
    SetFocus(row->edit);
    SelectEditText(*row);
}
