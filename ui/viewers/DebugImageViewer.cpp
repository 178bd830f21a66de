#include "ui/viewers/DebugImageViewer.h"

#include "render/KeptRun.h"
#include "resources/ResourceIds.h"
#include "storage/UISettings.h"
#include "ui/viewers/DebugImageDisplay.h"
#include "ui/window/MessageBoxOwner.h"
#include "ui/window/WindowPlacement.h"

#include <commctrl.h>
#include <iterator>

namespace {

constexpr UINT_PTR kSubclassId = 3;
constexpr WPARAM kCopyChar = 3; // Ctrl+C

constexpr const char *kChoiceNames[kDebugPictures] = {"Analysis image", "Selection, coverage and flat areas",
                                                      "Light sources", "Star and flare"};
constexpr const char *kZoomNames[kDebugZooms] = {"Fit", "100 %", "400 %"};

// How far a control follows the dialog's edges: it moves, or it grows.
struct Anchor {
    int id;
    bool moveX, moveY, growX, growY;
};
constexpr Anchor kAnchors[] = {
    {kDebugDisplayId, false, false, true, true},
    {IDOK, true, true, false, false},
    {IDCANCEL, true, true, false, false},
};

// The open viewer.
struct Viewer {
    HWND display;
    RECT openingRects[std::size(kAnchors)]; // of the anchored controls, as the template has them
    SIZE openingClient, smallest;           // of the client area and of the window, as the template has them
    MessageBoxOwner messageBoxOwner;
};
Viewer gViewer;

// Ctrl+C copies the picture from wherever the keyboard is.
LRESULT CALLBACK ForwardCopyProc(HWND control, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                 DWORD_PTR) {
    if (message == WM_CHAR && wParam == kCopyChar) {
        CopyDebugPicture(gViewer.display);
        return 0;
    }
    if (message == WM_NCDESTROY)
        RemoveWindowSubclass(control, ForwardCopyProc, id);
    return DefSubclassProc(control, message, wParam, lParam);
}

void FillCombo(HWND dialog, int id, const char *const *names, int count, int selected) {
    const HWND combo = GetDlgItem(dialog, id);
    for (int i = 0; i < count; ++i)
        SendMessageA(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(names[i]));
    SendMessageA(combo, CB_SETCURSEL, static_cast<WPARAM>(selected), 0);
    SetWindowSubclass(combo, ForwardCopyProc, kSubclassId, 0);
}

int SelectedIn(HWND dialog, int id) {
    const LRESULT selected = SendDlgItemMessageA(dialog, id, CB_GETCURSEL, 0, 0);
    return selected < 0 ? 0 : static_cast<int>(selected);
}

RECT RectOfControl(HWND dialog, int id) {
    RECT rect = {};
    GetWindowRect(GetDlgItem(dialog, id), &rect);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT *>(&rect), 2);
    return rect;
}

void RememberLayout(HWND dialog) {
    RECT rect;
    GetClientRect(dialog, &rect);
    gViewer.openingClient = {rect.right, rect.bottom};
    GetWindowRect(dialog, &rect);
    gViewer.smallest = {rect.right - rect.left, rect.bottom - rect.top};
    for (size_t i = 0; i < std::size(kAnchors); ++i)
        gViewer.openingRects[i] = RectOfControl(dialog, kAnchors[i].id);
}

void FollowSize(HWND dialog, int width, int height) {
    const int dx = width - gViewer.openingClient.cx, dy = height - gViewer.openingClient.cy;
    for (size_t i = 0; i < std::size(kAnchors); ++i) {
        const Anchor &anchor = kAnchors[i];
        const RECT &rect = gViewer.openingRects[i];
        SetWindowPos(GetDlgItem(dialog, anchor.id), nullptr, rect.left + (anchor.moveX ? dx : 0),
                     rect.top + (anchor.moveY ? dy : 0), rect.right - rect.left + (anchor.growX ? dx : 0),
                     rect.bottom - rect.top + (anchor.growY ? dy : 0), SWP_NOZORDER | SWP_NOACTIVATE);
    }
}

// Where it was when it was last closed with OK; never placed, it stays where its template puts it.
void Place(HWND dialog) {
    const ScreenRect stored = GetDebugViewerRect();
    if (IsEmptyScreenRect(stored))
        return;
    const RECT rect = PlaceOnMonitor({stored.left, stored.top, stored.right, stored.bottom});
    SetWindowPos(dialog, nullptr, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top,
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

void ShowChoice(HWND dialog) {
    const HCURSOR before = SetCursor(LoadCursorA(nullptr, IDC_WAIT));
    ShowDebugPicture(gViewer.display, SelectedIn(dialog, kDebugChoiceId));
    SetCursor(before);
}

void Open(HWND dialog) {
    gViewer = Viewer{};
    TakeMessageBoxes(dialog, &gViewer.messageBoxOwner);
    if (!AreUISettingsLoaded())
        LoadUISettings();
    gViewer.display = GetDlgItem(dialog, kDebugDisplayId);
    RememberLayout(dialog);
    FillCombo(dialog, kDebugChoiceId, kChoiceNames, kDebugPictures,
              static_cast<int>(GetDebugDisplayChoice()));
    FillCombo(dialog, kDebugZoomId, kZoomNames, kDebugZooms, kZoomToFit);
    for (const int button : {IDOK, IDCANCEL})
        SetWindowSubclass(GetDlgItem(dialog, button), ForwardCopyProc, kSubclassId, 0);
    AttachDebugDisplay(gViewer.display);
    Place(dialog);
    ShowChoice(dialog);
    SetFocus(gViewer.display);
}

void StoreSettings(HWND dialog) {
    WINDOWPLACEMENT placement = {};
    placement.length = sizeof placement;
    RECT rect = {};
    // A minimized window's own rectangle is far outside the screen.
    if (IsIconic(dialog) && GetWindowPlacement(dialog, &placement))
        rect = placement.rcNormalPosition;
    else
        GetWindowRect(dialog, &rect);
    SetDebugViewerRect({rect.left, rect.top, rect.right, rect.bottom});
    SetDebugDisplayChoice(static_cast<uint32_t>(SelectedIn(dialog, kDebugChoiceId)));
    SaveUISettings();
}

// The wheel turns over the display, wherever the keyboard is.
void PassWheel(WPARAM wParam, LPARAM lParam) {
    SendMessageA(gViewer.display, WM_MOUSEWHEEL, wParam, lParam);
}

INT_PTR HandleCommand(HWND dialog, int id, int code) {
    switch (id) {
    case kDebugChoiceId:
        if (code == CBN_SELCHANGE)
            ShowChoice(dialog);
        return TRUE;
    case kDebugZoomId:
        if (code == CBN_SELCHANGE)
            SetDebugZoom(gViewer.display, static_cast<DebugZoom>(SelectedIn(dialog, kDebugZoomId)));
        return TRUE;
    case kDebugDisplayId:
        if (code == kDebugZoomChanged)
            SendDlgItemMessageA(dialog, kDebugZoomId, CB_SETCURSEL, static_cast<WPARAM>(GetDebugZoom()), 0);
        return TRUE;
    case IDOK:
        StoreSettings(dialog);
        EndDialog(dialog, IDOK);
        return TRUE;
    case IDCANCEL:
        EndDialog(dialog, IDCANCEL);
        return TRUE;
    default:
        return FALSE;
    }
}

void LimitSize(MINMAXINFO *limits) {
    if (gViewer.smallest.cx > 0)
        limits->ptMinTrackSize = {gViewer.smallest.cx, gViewer.smallest.cy};
}

} // namespace

INT_PTR HandleDebugImageViewer(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_INITDIALOG:
        Open(dialog);
        return FALSE; // the display has the keyboard
    case WM_SIZE:
        if (wParam != SIZE_MINIMIZED && gViewer.display)
            FollowSize(dialog, LOWORD(lParam), HIWORD(lParam));
        return FALSE;
    case WM_GETMINMAXINFO:
        LimitSize(reinterpret_cast<MINMAXINFO *>(lParam));
        return FALSE;
    case WM_COMMAND:
        return HandleCommand(dialog, LOWORD(wParam), HIWORD(wParam));
    case WM_MOUSEWHEEL:
        PassWheel(wParam, lParam);
        return TRUE;
    case WM_CLOSE:
        EndDialog(dialog, IDCANCEL);
        return TRUE;
    case WM_DESTROY:
        GiveMessageBoxesBack(&gViewer.messageBoxOwner);
        gViewer.display = nullptr;
        return FALSE;
    default:
        return FALSE;
    }
}
