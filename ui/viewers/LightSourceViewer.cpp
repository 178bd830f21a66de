#include "ui/viewers/LightSourceViewer.h"

#include "engine/InitializationTask.h"
#include "engine/table/LightSourceTable.h"
#include "engine/table/LightSourceText.h"
#include "resources/ResourceIds.h"
#include "ui/viewers/LightSourceList.h"
#include "ui/window/MessageBoxOwner.h"

namespace {

struct Control {
    HWND window;
    RECT rect; // last one, in the dialog's client area
};

// The open viewer.
struct Viewer {
    Control countLine, list, okButton;
    RECT openingRect; // of the window, on the screen: it never gets smaller
    int dx, dy;       // of the last change of its size
    int halves;       // what dividing dx by two has left over so far, in half pixels
    MessageBoxOwner messageBoxOwner;
    bool wasMinimized; // the next change of size leads back from there
};
Viewer gViewer;

int WidthOf(const RECT &rect) {
    return rect.right - rect.left;
}

int HeightOf(const RECT &rect) {
    return rect.bottom - rect.top;
}

void RememberRect(HWND dialog, Control *control) {
    GetWindowRect(control->window, &control->rect);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT *>(&control->rect), 2);
}

void RememberRects(HWND dialog) {
    for (Control *control : {&gViewer.countLine, &gViewer.list, &gViewer.okButton})
        RememberRect(dialog, control);
}

// Drawn anew where it comes to lie: the dialog's background may have been painted over what would be moved.
void PutBack(const Control &control) {
    const RECT &rect = control.rect;
    SetWindowPos(control.window, nullptr, rect.left, rect.top, WidthOf(rect), HeightOf(rect),
                 SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOCOPYBITS);
}

void PutAllBack() {
    PutBack(gViewer.countLine);
    PutBack(gViewer.list);
    PutBack(gViewer.okButton);
}

void TakeControls(HWND dialog) {
    gViewer.countLine.window = GetDlgItem(dialog, kLightSourceCountId);
    gViewer.list.window = GetDlgItem(dialog, kLightSourceListId);
    gViewer.okButton.window = GetDlgItem(dialog, IDOK);
}

void ShowTable() {
    WaitLightSourceTable(nullptr, nullptr, INFINITE);
    const char *countText = FormatLightSourceTableLine(true);
    SetWindowTextA(gViewer.countLine.window, countText ? countText : "");
    FillLightSourceList(gViewer.list.window, GetLightSourceTable().count);
}

void Open(HWND dialog) {
    gViewer = Viewer{};
    TakeMessageBoxes(dialog, &gViewer.messageBoxOwner);
    TakeControls(dialog);
    ShowTable();
    AttachLightSourceList(gViewer.list.window); // when it is full: each line would go through it
    RememberRects(dialog);
    GetWindowRect(dialog, &gViewer.openingRect);
}

void NoteSizeChange(const NCCALCSIZE_PARAMS &change) {
    gViewer.dx = WidthOf(change.rgrc[0]) - WidthOf(change.rgrc[1]);
    gViewer.dy = HeightOf(change.rgrc[0]) - HeightOf(change.rgrc[1]);
}

// Half of dx in whole pixels. A border is dragged a pixel at a time, so what is left over is kept for the
// next change, or the button would fall behind the middle.
int TakeHalfOfDx() {
    gViewer.halves += gViewer.dx;
    const int pixels = gViewer.halves / 2;
    gViewer.halves -= pixels * 2;
    return pixels;
}

void FollowSize() {
    gViewer.countLine.rect.right += gViewer.dx;
    gViewer.list.rect.right += gViewer.dx;
    gViewer.list.rect.bottom += gViewer.dy;
    OffsetRect(&gViewer.okButton.rect, TakeHalfOfDx(), gViewer.dy);
    PutAllBack();
}

// A minimized window has no room for the controls: they stay as they are until it is back.
void HandlePositionChange(HWND dialog, const WINDOWPOS &change) {
    if (IsIconic(dialog)) {
        gViewer.wasMinimized = true;
        return;
    }
    const bool onlyRemember = (change.flags & (SWP_NOSIZE | SWP_FRAMECHANGED)) != 0;
    if (!onlyRemember && !gViewer.wasMinimized)
        FollowSize();
    gViewer.wasMinimized = false;
    RememberRects(dialog);
}

void LimitSize(MINMAXINFO *limits) {
    if (!IsRectEmpty(&gViewer.openingRect))
        limits->ptMinTrackSize = {WidthOf(gViewer.openingRect), HeightOf(gViewer.openingRect)};
}

INT_PTR HandleSize(HWND dialog, WPARAM kind) {
    if (kind == SIZE_MINIMIZED)
        return TRUE;
    if (kind != SIZE_RESTORED && kind != SIZE_MAXIMIZED)
        return FALSE;
    PutAllBack();
    ShowWindow(dialog, SW_RESTORE);
    return FALSE;
}

// The Escape key comes as a press of a cancel button.
INT_PTR HandleCommand(HWND dialog, WPARAM wParam) {
    if ((LOWORD(wParam) != IDOK && LOWORD(wParam) != IDCANCEL) || HIWORD(wParam) != BN_CLICKED)
        return FALSE;
    EndDialog(dialog, 0);
    return TRUE;
}

} // namespace

INT_PTR HandleLightSourceViewer(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_INITDIALOG:
        Open(dialog);
        return TRUE;
    case WM_NCCALCSIZE:
        if (wParam && lParam)
            NoteSizeChange(*reinterpret_cast<const NCCALCSIZE_PARAMS *>(lParam));
        return FALSE;
    case WM_WINDOWPOSCHANGED:
        if (lParam)
            HandlePositionChange(dialog, *reinterpret_cast<const WINDOWPOS *>(lParam));
        return FALSE;
    case WM_GETMINMAXINFO:
        if (lParam)
            LimitSize(reinterpret_cast<MINMAXINFO *>(lParam));
        return FALSE;
    case WM_SIZE:
        return HandleSize(dialog, wParam);
    case WM_COMMAND:
        return HandleCommand(dialog, wParam);
    case WM_CLOSE:
        EndDialog(dialog, 0);
        return TRUE;
    case WM_DESTROY:
        GiveMessageBoxesBack(&gViewer.messageBoxOwner);
        return FALSE;
    default:
        return FALSE;
    }
}
