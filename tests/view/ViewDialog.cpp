#include "tests/view/ViewDialog.h"

#include "engine/table/LightSourceTable.h"
#include "resources/DialogControlIds.h"
#include "ui/display/PreviewDisplayCursor.h"
#include "ui/window/DialogMessages.h"

#include <commctrl.h>
#include <string>

MenuAnswer gMenuAnswer;

namespace {

ViewDialog *gDialog = nullptr;
ImageBuffer gImage = {};
LightSourceTable gTable = {};
AskedMenu gAsked = {};

struct ControlPlace {
    const char *className;
    DWORD style;
    int id, x, y, width, height;
};

constexpr ControlPlace kControls[] = {
    {"STATIC", SS_NOTIFY, kPanIconId, 0, 0, 20, 20},
    {"STATIC", SS_NOTIFY, kZoomIconId, 20, 0, 20, 20},
    {"STATIC", SS_NOTIFY | WS_DISABLED, kHideIconId, 40, 0, 20, 20},
    {"STATIC", SS_NOTIFY | WS_DISABLED, kShowIconId, 60, 0, 20, 20},
    {"STATIC", SS_NOTIFY, kZoomOutButtonId, 80, 0, 20, 20},
    {"STATIC", SS_NOTIFY, kZoomInButtonId, 100, 0, 20, 20},
    {"STATIC", SS_NOTIFY, kZoomTextId, 120, 0, 80, 20},
    {"SCROLLBAR", SBS_HORZ, kHorizontalBarId, 200, 0, 200, 16},
    {"SCROLLBAR", SBS_VERT, kVerticalBarId, 480, 30, 16, 200},
    {"BUTTON", WS_TABSTOP, 2, 420, 0, 60, 20},
};

HWND AddControl(HWND parent, const ControlPlace &c) {
    return CreateWindowExA(0, c.className, "", WS_CHILD | WS_VISIBLE | c.style, c.x, c.y, c.width, c.height,
                           parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(c.id)),
                           GetModuleHandleA(nullptr), nullptr);
}

void ShowPicture(HWND, int controlId, ToolPicture picture) {
    if (gDialog)
        gDialog->pictures[controlId] = picture;
}

INT_PTR CALLBACK ViewDialogProc(HWND, UINT message, WPARAM wParam, LPARAM lParam) {
    if (!gDialog)
        return FALSE;
    switch (message) {
    case WM_INITDIALOG:
        return FALSE;
    case kMsgRequestPreview:
        ++gDialog->previewRequests;
        if (gDialog->onRequest)
            gDialog->onRequest();
        return TRUE;
    case kMsgTableReady:
        OnPreviewTableReady();
        return TRUE;
    case WM_HSCROLL:
    case WM_VSCROLL:
        return OnPreviewScroll(reinterpret_cast<HWND>(lParam), LOWORD(wParam));
    case WM_ACTIVATEAPP:
        if (!wParam)
            OnPreviewDeactivated();
        return FALSE;
    }
    return FALSE;
}

BOOL WINAPI AskMenu(HMENU menu, UINT flags, int x, int y, int, HWND owner, const RECT *) {
    gAsked = {x, y, flags, owner, {}, 0};
    for (int i = 0; i < GetMenuItemCount(menu); ++i) {
        char label[100] = "";
        GetMenuStringA(menu, static_cast<UINT>(i), label, sizeof label, MF_BYPOSITION);
        const UINT id = GetMenuItemID(menu, i);
        if (id == 0)
            ++gAsked.separators;
        else
            gAsked.items[static_cast<int>(id)] = label;
    }
    SetLastError(gMenuAnswer.error);
    return gMenuAnswer.command;
}

LPARAM PointParam(int x, int y) {
    return MAKELPARAM(static_cast<WORD>(x), static_cast<WORD>(y));
}

} // namespace

// The linker takes an import's address from here instead of from the import library.
extern "C" decltype(&AskMenu) __imp_TrackPopupMenu;
decltype(&AskMenu) __imp_TrackPopupMenu = AskMenu;

AskedMenu TakeAskedMenu() {
    AskedMenu taken = gAsked;
    gAsked = {};
    return taken;
}

bool OpenViewDialog(ViewDialog *dialog, const IntRect &image, int displayWidth, int displayHeight) {
    gImage = {};
    gImage.bounds = image;
    gTable = {};
    gLightSourceTable = &gTable;
    return OpenViewDialogOn(dialog, gImage, displayWidth, displayHeight);
}

bool OpenViewDialogOn(ViewDialog *dialog, const ImageBuffer &image, int displayWidth, int displayHeight) {
    if (!RegisterPreviewDisplayClass())
        return false;
    *dialog = ViewDialog();
    gDialog = dialog;
    HoldKeys(false, false);
    // A template without controls: header, no menu, the dialog class, no caption.
    struct {
        DLGTEMPLATE header;
        WORD menu, windowClass, caption;
    } description = {};
    description.header.style = WS_POPUP | WS_CAPTION | WS_CLIPCHILDREN;
    dialog->window = CreateDialogIndirectParamA(GetModuleHandleA(nullptr), &description.header, nullptr,
                                                ViewDialogProc, 0);
    if (!dialog->window)
        return false;
    SetWindowPos(dialog->window, nullptr, 10, 10, 620, 500, SWP_NOZORDER);
    for (const ControlPlace &control : kControls)
        AddControl(dialog->window, control);
    dialog->display = AddControl(
        dialog->window, {"ProxyDisplay", WS_TABSTOP, kPreviewDisplayId, 20, 30, displayWidth, displayHeight});
    const bool attached =
        AttachPreviewDisplay(dialog->window, {&image, nullptr, 0, dialog->window}, ShowPicture);
    ShowWindow(dialog->window, SW_SHOW);
    SetForegroundWindow(dialog->window);
    PumpMessages();
    UpdateWindow(dialog->display);
    PumpMessages();
    return attached;
}

void CloseViewDialog(ViewDialog *dialog) {
    HoldKeys(false, false);
    if (dialog->window)
        DestroyWindow(dialog->window);
    PumpMessages();
    dialog->window = dialog->display = nullptr;
    if (gLightSourceTable == &gTable)
        gLightSourceTable = nullptr;
    gDialog = nullptr;
}

void SetLightSources(ViewDialog *dialog, LightSource *sources, uint32_t count) {
    gTable.records = sources;
    gTable.Count = count;
    SendMessageA(dialog->window, kMsgTableReady, 0, 0);
    PumpMessages();
}

void PumpMessages() {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

void PumpFor(DWORD milliseconds) {
    const DWORD start = GetTickCount();
    while (GetTickCount() - start < milliseconds) {
        PumpMessages();
        Sleep(2);
    }
    PumpMessages();
}

void HoldKeys(bool alt, bool ctrl) {
    BYTE keys[256];
    GetKeyboardState(keys);
    keys[VK_MENU] = keys[VK_LMENU] = alt ? 0x80 : 0;
    keys[VK_CONTROL] = keys[VK_LCONTROL] = ctrl ? 0x80 : 0;
    SetKeyboardState(keys);
}

void SendMouse(HWND window, UINT message, int x, int y, WPARAM keys) {
    SendMessageA(window, message, keys, PointParam(x, y));
}

void ClickDisplay(const ViewDialog &dialog, int x, int y) {
    SendMouse(dialog.display, WM_LBUTTONDOWN, x, y, MK_LBUTTON);
    SendMouse(dialog.display, WM_LBUTTONUP, x, y);
    PumpMessages();
}

void DragDisplay(const ViewDialog &dialog, POINT from, POINT to) {
    constexpr int steps = 5;
    SendMouse(dialog.display, WM_LBUTTONDOWN, from.x, from.y, MK_LBUTTON);
    for (int i = 1; i <= steps; ++i)
        SendMouse(dialog.display, WM_MOUSEMOVE, from.x + (to.x - from.x) * i / steps,
                  from.y + (to.y - from.y) * i / steps, MK_LBUTTON);
    SendMouse(dialog.display, WM_LBUTTONUP, to.x, to.y);
    PumpMessages();
}

LRESULT WheelDisplay(const ViewDialog &dialog, int x, int y, int delta, WPARAM keys) {
    POINT point = {x, y};
    ClientToScreen(dialog.display, &point);
    const LRESULT result = SendMessageA(dialog.display, WM_MOUSEWHEEL,
                                        MAKEWPARAM(static_cast<WORD>(keys), static_cast<WORD>(delta)),
                                        PointParam(point.x, point.y));
    PumpMessages();
    return result;
}
