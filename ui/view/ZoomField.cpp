#include "ui/view/ZoomField.h"

#include "diag/module/ModuleInstance.h"
#include "resources/DialogControlIds.h"
#include "ui/fields/NumberText.h"
#include "ui/view/ViewTools.h"

#include <commctrl.h>
#include <cstdio>
#include <iterator>

namespace {

constexpr UINT_PTR kFieldSubclassId = 1;
constexpr int kDecimals = 2;
constexpr double kHundredths = 100.0;
constexpr int kMostCharacters = 8;

struct {
    HWND field, focusBefore; // null: it is not open
} gZoomField;

// Nothing when no number was typed.
void TakeZoom(HWND field) {
    wchar_t typed[kMostCharacters + 1] = L"";
    GetWindowTextW(field, typed, static_cast<int>(std::size(typed)));
    KeepNumberCharacters(typed);
    char number[kMostCharacters + 1];
    snprintf(number, sizeof number, "%ls", typed);
    int32_t hundredths = 0;
    if (ParseScaledNumber(number, kDecimals, &hundredths) && SendMessageW(field, EM_GETMODIFY, 0, 0))
        SetZoom(hundredths / kHundredths);
}

// The record goes first: the field loses the focus on its way out.
void EndZoomField(bool takes) {
    const HWND field = gZoomField.field, before = gZoomField.focusBefore;
    if (!field)
        return;
    gZoomField = {};
    if (takes)
        TakeZoom(field);
    if (GetFocus() == field)
        SetFocus(before ? before : gViewTools.display);
    DestroyWindow(field);
}

bool OnFieldKey(WPARAM key) {
    if (key != VK_RETURN && key != VK_ESCAPE && key != VK_TAB)
        return false;
    EndZoomField(key != VK_ESCAPE);
    return true;
}

LRESULT CALLBACK FieldProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR) {
    switch (message) {
    case WM_NCDESTROY:
        RemoveWindowSubclass(window, FieldProc, kFieldSubclassId);
        if (gZoomField.field == window)
            gZoomField = {};
        break;
    case WM_GETDLGCODE: // Enter and Esc are for the field, not for the dialog's buttons
        return DefSubclassProc(window, message, wParam, lParam) | DLGC_WANTALLKEYS;
    case WM_KEYDOWN:
        if (OnFieldKey(wParam))
            return 0;
        break;
    case WM_CHAR:
        if (wParam < L' ' && wParam != VK_BACK)
            return 0;
        break;
    case WM_KILLFOCUS: {
        const LRESULT result = DefSubclassProc(window, message, wParam, lParam);
        if (gZoomField.field == window) { // it cannot be destroyed in the middle of this
            TakeZoom(window);
            gZoomField = {};
            ShowWindow(window, SW_HIDE);
            PostMessageW(window, WM_CLOSE, 0, 0);
        }
        return result;
    }
    }
    return DefSubclassProc(window, message, wParam, lParam);
}

HWND MakeField(HWND dialog, HWND place) {
    RECT rect = {};
    GetWindowRect(place, &rect);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT *>(&rect), 2);
    const HWND field = CreateWindowExW(
        0, L"Edit", L"", WS_CHILD | WS_BORDER | ES_CENTER | ES_AUTOHSCROLL, static_cast<int>(rect.left),
        static_cast<int>(rect.top), static_cast<int>(rect.right - rect.left),
        static_cast<int>(rect.bottom - rect.top), dialog,
        reinterpret_cast<HMENU>(static_cast<INT_PTR>(kZoomFieldId)), ModuleInstance(), nullptr);
    if (field && !SetWindowSubclass(field, FieldProc, kFieldSubclassId, 0)) {
        DestroyWindow(field);
        return nullptr;
    }
    return field;
}

void ShowPresentZoom(HWND field) {
    wchar_t text[kMostCharacters + 1];
    swprintf(text, std::size(text), L"%.*f", kDecimals, gViewTools.view.zoom);
    SetWindowTextW(field, text);
    SendMessageW(field, EM_SETSEL, 0, -1);
}

} // namespace

void OpenZoomField(HWND dialog) {
    const HWND place = GetDlgItem(dialog, kZoomTextId);
    const HWND field = place && !gZoomField.field ? MakeField(dialog, place) : nullptr;
    if (!field)
        return;
    SendMessageW(field, WM_SETFONT, static_cast<WPARAM>(SendMessageW(place, WM_GETFONT, 0, 0)), FALSE);
    SendMessageW(field, EM_LIMITTEXT, kMostCharacters, 0);
    ShowPresentZoom(field);
    gZoomField = {field, GetFocus()};
    SetWindowPos(field, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_SHOWWINDOW);
    SetFocus(field);
}

void CloseZoomField() {
    EndZoomField(false);
}
