#include "ui/fields/FieldFrame.h"

#include "ui/window/Palette.h"

#include <algorithm>
#include <commctrl.h>

namespace {

constexpr UINT_PTR kFrameSubclassId = 2;
// Dialog units: a line of the dialog's text, and a field in the template.
constexpr int kLineUnits = 8, kFieldUnits = 12;
constexpr int kInsetPart = 4; // of a line's height, left and right of the digits

// The control may keep a little of the area to itself, above or below its line.
void TakeClientArea(LONG kept, RECT *rect) {
    const LONG height = rect->bottom - rect->top;
    const LONG line = MulDiv(static_cast<int>(height), kLineUnits, kFieldUnits) + kept;
    const LONG inset = std::min(line / kInsetPart, (rect->right - rect->left) / 2);
    rect->left += inset;
    rect->right -= inset;
    rect->top += (height - line) / 2;
    rect->bottom = rect->top + line;
}

void PaintAround(HWND field, LONG kept) {
    const HDC dc = GetWindowDC(field);
    if (!dc)
        return;
    RECT whole = {}, client = {};
    GetWindowRect(field, &whole);
    OffsetRect(&whole, -static_cast<int>(whole.left), -static_cast<int>(whole.top));
    client = whole;
    TakeClientArea(kept, &client);
    ExcludeClipRect(dc, client.left, client.top, client.right, client.bottom);
    FillWith(dc, whole, kFieldColor);
    FrameWith(dc, whole, kLineColor);
    ReleaseDC(field, dc);
}

LRESULT CALLBACK FrameProc(HWND field, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR kept) {
    switch (message) {
    case WM_NCDESTROY:
        RemoveWindowSubclass(field, FrameProc, kFrameSubclassId);
        break;
    case WM_NCCALCSIZE:
        if (lParam == 0)
            break;
        TakeClientArea(static_cast<LONG>(kept),
                       reinterpret_cast<RECT *>(lParam)); // the first of the record when wParam is set
        return 0;
    case WM_NCPAINT:
        PaintAround(field, static_cast<LONG>(kept));
        return 0;
    case WM_NCHITTEST: // a click beside the digits is one on the field
        return HTCLIENT;
    }
    return DefSubclassProc(field, message, wParam, lParam);
}

void UseFrame(HWND field, LONG kept) {
    SetWindowSubclass(field, FrameProc, kFrameSubclassId, static_cast<DWORD_PTR>(kept));
    SetWindowPos(field, nullptr, 0, 0, 0, 0,
                 SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_FRAMECHANGED);
}

} // namespace

void FrameField(HWND field) {
    UseFrame(field, 0);
    RECT client = {}, line = {};
    GetClientRect(field, &client);
    SendMessageW(field, EM_GETRECT, 0, reinterpret_cast<LPARAM>(&line));
    UseFrame(field, std::max(0L, client.bottom - (line.bottom - line.top)));
}
