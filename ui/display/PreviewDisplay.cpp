#include "ui/display/PreviewDisplay.h"

#include "diag/module/ModuleInstance.h"
#include "engine/InitializationTask.h"
#include "resources/DialogControlIds.h"
#include "storage/UISettings.h"
#include "ui/display/PreviewDisplayCursor.h"
#include "ui/display/PreviewDisplayKeys.h"
#include "ui/display/PreviewDisplayMarks.h"
#include "ui/display/PreviewDisplayMouse.h"
#include "ui/display/PreviewDisplayPaint.h"
#include "ui/display/PreviewDisplayState.h"
#include "ui/view/ViewMenu.h"
#include "ui/window/DialogMessages.h"
#include "ui/window/ForgedMessages.h"

#include <commctrl.h>
#include <windowsx.h>

PreviewDisplay gPreviewDisplay;

namespace {

constexpr char kDisplayClass[] = "ProxyDisplay";
constexpr UINT_PTR kDisplaySubclassId = 1;
constexpr LRESULT kDialogCode = DLGC_STATIC | DLGC_WANTARROWS;
static_assert(kDialogCode == 257);
constexpr LRESULT kHandled = 1;
static_assert(kHandled == HTCLIENT);

POINT ClientPoint(LPARAM lParam) {
    return {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
}

void OnPaint() {
    PaintDisplay();
    if (gPreviewDisplay.painted)
        return;
    gPreviewDisplay.painted = true;
    SelectViewTool(GetViewTool());
}

// A key that is held when the focus goes comes up elsewhere.
void OnFocusChanged(bool focused) {
    if (!focused)
        gPreviewDisplay.spaceHeld = false;
    ReadViewModifiers();
    RefreshDisplayCursor();
    InvalidateRect(gPreviewDisplay.window, nullptr, FALSE);
}

void OnSize() {
    UpdateViewLayout();
    AskForPreview();
}

void OnContextMenu(LPARAM lParam) {
    if (gPreviewDisplay.mouse.state == kMouseIdle)
        OnPreviewContextMenu(lParam);
}

// The task goes first: it invalidates the display and posts to the dialog as long as it runs.
void OnDestroy() {
    StopProxyUpdateTask();
    CancelPreviewGesture();
    FreeDisplaySurface(&gPreviewDisplay.surface);
    gPreviewDisplay = {};
    DetachViewTools();
}

LRESULT CALLBACK DisplayProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR) {
    if (IsForgedDestruction(window, message))
        return 0;
    if (message == WM_NCDESTROY)
        RemoveWindowSubclass(window, DisplayProc, kDisplaySubclassId);
    if (window != gPreviewDisplay.window)
        return DefSubclassProc(window, message, wParam, lParam);
    switch (message) {
    case kMsgRefreshCursor:
        RefreshDisplayCursor();
        UpdateLightMarks();
        return 0;
    case WM_SETCURSOR:
        ReadViewModifiers();
        SetDisplayCursor();
        return TRUE;
    case WM_GETDLGCODE:
        return kDialogCode;
    case WM_ERASEBKGND: // erased
    case WM_NCHITTEST:  // all of it is client area
        return kHandled;
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
        OnFocusChanged(message == WM_SETFOCUS);
        return 0;
    case WM_PAINT:
        OnPaint();
        return 0;
    case WM_PRINT:
    case WM_PRINTCLIENT:
        PrintDisplay(reinterpret_cast<HDC>(wParam));
        return 0;
    case WM_SIZE:
        OnSize();
        return 0;
    case WM_KEYDOWN:
        OnDisplayKeyDown(wParam);
        return 0;
    case WM_KEYUP:
        OnDisplayKeyUp(wParam);
        return 0;
    case WM_SYSKEYDOWN:
        OnPreviewModifierKey(wParam, true);
        break;
    case WM_SYSKEYUP:
        OnPreviewModifierKey(wParam, false);
        // Alt belongs to the tools here; the class procedure would open the window's menu.
        if (wParam == VK_MENU)
            return 0;
        break;
    case WM_TIMER:
        OnDisplayTimer(wParam);
        return 0;
    case WM_LBUTTONDOWN:
        OnDisplayButtonDown(ClientPoint(lParam));
        return 0;
    case WM_MOUSEMOVE:
        OnDisplayMouseMove(ClientPoint(lParam));
        return 0;
    case WM_MOUSELEAVE:
        OnDisplayMouseLeave();
        return 0;
    case WM_LBUTTONUP:
        OnDisplayButtonUp(ClientPoint(lParam));
        return 0;
    case WM_CAPTURECHANGED:
        OnDisplayCaptureChanged();
        return 0;
    case WM_MOUSEWHEEL:
        if (OnPreviewWheel(wParam, lParam))
            return 0;
        break;
    case WM_MOUSEHWHEEL:
        OnDisplayWheel(GET_WHEEL_DELTA_WPARAM(wParam), 0, ClientPoint(lParam), true);
        return 0;
    case WM_CONTEXTMENU:
        OnContextMenu(lParam);
        return 0;
    case WM_DESTROY:
        OnDestroy();
        break;
    }
    return DefSubclassProc(window, message, wParam, lParam);
}

} // namespace

// Redrawn whole when its size changes, so that the system never moves old pixels about in it.
bool RegisterPreviewDisplayClass() {
    WNDCLASSEXA description = {};
    description.cbSize = sizeof description;
    description.style = CS_HREDRAW | CS_VREDRAW;
    description.lpfnWndProc = DefWindowProcA;
    description.hInstance = ModuleInstance();
    description.hCursor = LoadCursorA(nullptr, reinterpret_cast<LPCSTR>(IDC_ARROW));
    description.lpszClassName = kDisplayClass;
    return RegisterClassExA(&description) != 0 || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
}

void UnregisterPreviewDisplayClass() {
    UnregisterClassA(kDisplayClass, ModuleInstance());
}

bool AttachPreviewDisplay(HWND dialog, const PreviewSource &source, ShowToolPicture showPicture) {
    const HWND window = GetDlgItem(dialog, kPreviewDisplayId);
    if (!window || gPreviewDisplay.window || !source.image ||
        !SetWindowSubclass(window, DisplayProc, kDisplaySubclassId, 0))
        return false;
    gPreviewDisplay = {};
    gPreviewDisplay.window = window;
    CreateDisplayRegions(&gPreviewDisplay.surface);
    AttachViewTools(dialog, window, source.image->bounds, showPicture);
    gPreviewDisplay.hasTask = StartProxyUpdateTask(window, source);
    return gPreviewDisplay.hasTask;
}

bool OnPreviewTableReady() {
    if (gViewTools.tableReady || !gPreviewDisplay.hasTask || !WaitLightSourceTable(nullptr, nullptr, 0))
        return false;
    EnableEffectTools();
    UpdateLightMarks();
    return true;
}
