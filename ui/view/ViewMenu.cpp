#include "ui/view/ViewMenu.h"

#include "diag/ErrorReport.h"
#include "diag/module/ModuleInstance.h"
#include "resources/ResourceIds.h"
#include "ui/view/ViewTools.h"

#include <cmath>
#include <cwchar>
#include <windowsx.h>

namespace {

constexpr uint32_t kSiteTrackFailed = 1205, kSiteUnexpectedItem = 1211;
constexpr int kMenuGap = 2; // pixels between a control and the menu above it

struct MenuKey {
    uint32_t command;
    const wchar_t *key;
};
constexpr MenuKey kMenuKeys[] = {{BX_ZOOM_FIT_IN_VIEW, L"\tCtrl+O"}, {BX_ZOOM_FIT_ON_SCREEN, L"\tCtrl+0"}};
constexpr int kItemCapacity = 64;

void ShowKeys(HMENU menu) {
    for (const MenuKey &item : kMenuKeys) {
        wchar_t text[kItemCapacity] = L"";
        GetMenuStringW(menu, item.command, text, kItemCapacity / 2, MF_BYCOMMAND);
        wcscat(text, item.key);
        MENUITEMINFOW info = {};
        info.cbSize = sizeof info;
        info.fMask = MIIM_STRING;
        info.dwTypeData = text;
        SetMenuItemInfoW(menu, item.command, FALSE, &info);
    }
}

// The command that "Actual Pixels" shares its zoom with stands for both.
void MarkPresentZoom(HMENU menu) {
    constexpr double shownDifference = 0.005;
    for (const ZoomMenuItem &item : kZoomMenuItems)
        if (item.command != BX_ZOOM_ACTUAL_PIXELS &&
            std::abs(item.zoom - gViewTools.view.zoom) < shownDifference)
            CheckMenuItem(menu, item.command, MF_BYCOMMAND | MF_CHECKED);
    if (gViewTools.isFitted)
        CheckMenuItem(menu, BX_ZOOM_FIT_IN_VIEW, MF_BYCOMMAND | MF_CHECKED);
}

// The user's choice, 0 for none. The pop-up belongs to the menu and goes with it.
uint32_t TrackZoomMenu(POINT screen, UINT alignment) {
    const HMENU menu = LoadMenuA(ModuleInstance(), MAKEINTRESOURCEA(kZoomMenuId));
    const HWND dialog = gViewTools.dialog;
    ShowKeys(menu);
    MarkPresentZoom(menu);
    SetForegroundWindow(dialog);
    SetLastError(0);
    const uint32_t command =
        static_cast<uint32_t>(TrackPopupMenu(GetSubMenu(menu, 0), alignment | TPM_RIGHTBUTTON | TPM_RETURNCMD,
                                             screen.x, screen.y, 0, dialog, nullptr));
    const DWORD error = command == 0 ? GetLastError() : 0;
    // Without a message of its own to handle the menu's owner would not close the menu the next time.
    PostMessageA(dialog, WM_NULL, 0, 0);
    if (menu)
        DestroyMenu(menu);
    if (error != 0)
        ReportError({kSiteTrackFailed, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "TrackPopupMenu() failed with error code 0x%X", static_cast<unsigned>(error));
    return command;
}

} // namespace

bool ApplyZoomCommand(uint32_t command) {
    double zoom;
    if (ZoomOfMenuCommand(command, &zoom))
        SetZoom(zoom);
    else if (command == BX_ZOOM_FIT_IN_VIEW)
        FitInView();
    else if (command == BX_ZOOM_FIT_ON_SCREEN)
        FitOnScreen();
    else
        return false;
    return true;
}

void ShowZoomMenu(POINT screen, UINT alignment) {
    const uint32_t command = TrackZoomMenu(screen, alignment);
    if (command != 0 && !ApplyZoomCommand(command))
        ReportError({kSiteUnexpectedItem, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "TrackPopupMenu() returned unexpected value 0x%X", static_cast<unsigned>(command));
}

void ShowZoomMenuAtText(HWND dialog) {
    RECT rect = {};
    GetWindowRect(GetDlgItem(dialog, kZoomTextId), &rect);
    ShowZoomMenu({(rect.left + rect.right) / 2, rect.top - kMenuGap}, TPM_CENTERALIGN | TPM_BOTTOMALIGN);
}

void ShowZoomMenuAtArrow(HWND dialog) {
    RECT rect = {};
    GetWindowRect(GetDlgItem(dialog, kZoomArrowId), &rect);
    ShowZoomMenu({rect.left, rect.top - kMenuGap}, TPM_BOTTOMALIGN);
}

void OnPreviewContextMenu(LPARAM screenPoint) {
    POINT screen = {GET_X_LPARAM(screenPoint), GET_Y_LPARAM(screenPoint)};
    if (screen.x == -1 && screen.y == -1)
        GetCursorPos(&screen);
    ShowZoomMenu(screen, TPM_RIGHTALIGN);
}
