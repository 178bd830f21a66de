#include "ui/look/PreviewFrame.h"

#include "resources/DialogControlIds.h"
#include "ui/window/Palette.h"

#include <commctrl.h>

namespace {

constexpr UINT_PTR kFrameSubclassId = 1;

// A plain line: the group box's own frame starts below the top of its window and is broken for a caption that
// this one does not have.
void PaintFrame(HWND window) {
    PAINTSTRUCT paint;
    const HDC dc = BeginPaint(window, &paint);
    if (!dc)
        return;
    RECT client = {};
    GetClientRect(window, &client);
    FrameWith(dc, client, kLineColor);
    EndPaint(window, &paint);
}

LRESULT CALLBACK FrameProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR) {
    switch (message) {
    case WM_NCDESTROY:
        RemoveWindowSubclass(window, FrameProc, kFrameSubclassId);
        break;
    case WM_NCHITTEST:
        return HTTRANSPARENT;
    case WM_ERASEBKGND: // the dialog's background shows inside
        return 1;
    case WM_PAINT:
        PaintFrame(window);
        return 0;
    }
    return DefSubclassProc(window, message, wParam, lParam);
}

} // namespace

void SubclassPreviewFrame(HWND dialog) {
    if (const HWND frame = GetDlgItem(dialog, kPreviewFrameId))
        SetWindowSubclass(frame, FrameProc, kFrameSubclassId, 0);
}
