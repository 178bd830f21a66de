#include "tests/viewers/ModalDialog.h"

#include <cstring>

namespace {

struct Modal {
    HWND window;
    DLGPROC procedure;
    const std::function<void(HWND)> *script, *beforeInit;
};
Modal gModal;

INT_PTR CALLBACK ModalProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        gModal.window = window;
        if (*gModal.beforeInit)
            (*gModal.beforeInit)(window);
    }
    return gModal.procedure(window, message, wParam, lParam);
}

void CALLBACK PlayUser(HWND, UINT, UINT_PTR timer, DWORD) {
    if (!gModal.window || !IsWindowVisible(gModal.window))
        return;
    KillTimer(nullptr, timer);
    const HWND window = gModal.window;
    (*gModal.script)(window);
    if (IsWindow(window))
        PostMessageA(window, WM_CLOSE, 0, 0);
}

} // namespace

INT_PTR RunModal(int dialogId, DLGPROC procedure, const std::function<void(HWND)> &script,
                 const std::function<void(HWND)> &beforeInit, HINSTANCE module) {
    gModal = {nullptr, procedure, &script, &beforeInit};
    SetTimer(nullptr, 0, 1, PlayUser);
    const INT_PTR result = DialogBoxParamA(module ? module : GetModuleHandleA(nullptr),
                                           MAKEINTRESOURCEA(dialogId), nullptr, ModalProc, 0);
    PumpMessages();
    return result;
}

void PumpMessages() {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

std::string TextOf(HWND window) {
    char text[1000] = "";
    GetWindowTextA(window, text, sizeof text);
    return text;
}

RECT RectIn(HWND dialog, HWND control) {
    RECT rect = {};
    GetWindowRect(control, &rect);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT *>(&rect), 2);
    return rect;
}

void TypeCtrl(HWND window, WPARAM character) {
    SendMessageA(window, WM_KEYDOWN, VK_CONTROL, 0x001D0001);
    SendMessageA(window, WM_CHAR, character, 0x001E0001);
    SendMessageA(window, WM_KEYUP, VK_CONTROL, 0xC01D0001);
}

std::string ClipboardBytes(UINT format) {
    std::string bytes;
    if (!OpenClipboard(nullptr))
        return bytes;
    if (const HANDLE block = GetClipboardData(format)) {
        if (const void *data = GlobalLock(block)) {
            bytes.assign(static_cast<const char *>(data), GlobalSize(block));
            GlobalUnlock(block);
        }
    }
    CloseClipboard();
    return bytes;
}

void SetClipboardText(const std::string &text) {
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, text.size() + 1);
    memcpy(GlobalLock(block), text.c_str(), text.size() + 1);
    GlobalUnlock(block);
    OpenClipboard(nullptr);
    EmptyClipboard();
    SetClipboardData(CF_TEXT, block);
    CloseClipboard();
}
