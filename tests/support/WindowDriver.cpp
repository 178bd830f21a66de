#include "tests/support/WindowDriver.h"

#include <commctrl.h>
#include <cstring>
#include <utility>

namespace {

constexpr LPARAM kKeyUp = static_cast<LPARAM>(0xC0000000u);

// Modal dialogs call back without a context, and one is played at a time.
struct {
    DLGPROC real;
    HWND window;
    const std::function<void(HWND)> *script;
    const DialogWatch *watch;
} gPlay;

INT_PTR CALLBACK PlayedProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG)
        gPlay.window = window;
    return *gPlay.watch ? (*gPlay.watch)(gPlay.real, window, message, wParam, lParam)
                        : gPlay.real(window, message, wParam, lParam);
}

// The modal loop shows the dialog when nothing else waits.
void CALLBACK PlayScript(HWND, UINT, UINT_PTR timer, DWORD) {
    if (!gPlay.window || !IsWindowVisible(gPlay.window))
        return;
    KillTimer(nullptr, timer);
    if (const auto *script =
            std::exchange(gPlay.script, nullptr)) // a dialog that was refused left a timer too
        (*script)(gPlay.window);
}

void PostMouse(HWND window, UINT message, LONG x, LONG y, WPARAM keys) {
    const HWND root = GetAncestor(window, GA_ROOT);
    PostMessageW(window, message, keys, PointParam(x, y));
    PumpMessages(root);
}

} // namespace

void PumpMessages(HWND dialog) {
    MSG message;
    while ((!dialog || IsWindowVisible(dialog)) && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        const HWND root = GetAncestor(message.hwnd, GA_ROOT);
        if (root && IsDialogMessageW(root, &message))
            continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

bool PumpUntil(const std::function<bool()> &holds, DWORD milliseconds, HWND dialog) {
    const DWORD start = GetTickCount();
    for (;;) {
        PumpMessages(dialog);
        if (holds())
            return true;
        if (GetTickCount() - start >= milliseconds || (dialog && !IsWindowVisible(dialog)))
            return false;
        Sleep(1);
    }
}

void PumpFor(DWORD milliseconds, HWND dialog) {
    PumpUntil([] { return false; }, milliseconds, dialog);
}

LPARAM PointParam(LONG x, LONG y) {
    return MAKELPARAM(static_cast<WORD>(x), static_cast<WORD>(y));
}

void SendMouse(HWND window, UINT message, POINT point, WPARAM keys) {
    SendMessageW(window, message, keys, PointParam(point.x, point.y));
}

void ClickAt(HWND window, POINT point) {
    PostMouse(window, WM_LBUTTONDOWN, point.x, point.y, MK_LBUTTON);
    PostMouse(window, WM_LBUTTONUP, point.x, point.y, 0);
}

void DragOn(HWND window, POINT from, POINT to, int steps) {
    PostMouse(window, WM_LBUTTONDOWN, from.x, from.y, MK_LBUTTON);
    for (int i = 1; i <= steps; ++i)
        PostMouse(window, WM_MOUSEMOVE, from.x + (to.x - from.x) * i / steps,
                  from.y + (to.y - from.y) * i / steps, MK_LBUTTON);
    PostMouse(window, WM_LBUTTONUP, to.x, to.y, 0);
}

LRESULT TurnWheel(HWND window, POINT point, int delta, WPARAM keys) {
    ClientToScreen(window, &point);
    const WPARAM turn = MAKEWPARAM(static_cast<WORD>(keys), static_cast<WORD>(delta));
    const LRESULT result = SendMessageW(window, WM_MOUSEWHEEL, turn, PointParam(point.x, point.y));
    PumpMessages();
    return result;
}

void HoldKeys(bool alt, bool ctrl, bool shift) {
    BYTE keys[256];
    GetKeyboardState(keys);
    keys[VK_MENU] = keys[VK_LMENU] = alt ? 0x80 : 0;
    keys[VK_CONTROL] = keys[VK_LCONTROL] = ctrl ? 0x80 : 0;
    keys[VK_SHIFT] = keys[VK_LSHIFT] = shift ? 0x80 : 0;
    SetKeyboardState(keys);
}

void PressKey(HWND window, WPARAM key, int repeatCount) {
    SendMessageW(window, WM_KEYDOWN, key, repeatCount);
    SendMessageW(window, WM_KEYUP, key, kKeyUp | 1);
}

void TypeText(HWND window, const char *text) {
    for (; *text; ++text)
        SendMessageA(window, WM_CHAR, static_cast<unsigned char>(*text), 1);
}

void PostKey(HWND dialog, WORD key) {
    const LPARAM scan = static_cast<LPARAM>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC)) << 16 | 1;
    for (const LPARAM up : {LPARAM{0}, kKeyUp}) {
        PostMessageW(GetFocus() ? GetFocus() : dialog, up ? WM_KEYUP : WM_KEYDOWN, key, scan | up);
        PumpMessages(dialog);
    }
}

void ChooseRow(HWND dialog, int comboId, int row) {
    const HWND combo = GetDlgItem(dialog, comboId);
    SendMessageW(combo, CB_SETCURSEL, static_cast<WPARAM>(row), 0);
    SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(comboId, CBN_SELCHANGE), reinterpret_cast<LPARAM>(combo));
    PumpMessages(dialog);
}

std::string TextOf(HWND window) {
    char text[1000] = "";
    GetWindowTextA(window, text, sizeof text);
    return text;
}

RECT RectIn(HWND parent, HWND control) {
    RECT rect = {};
    GetWindowRect(control, &rect);
    MapWindowPoints(nullptr, parent, reinterpret_cast<POINT *>(&rect), 2);
    return rect;
}

RECT ClientOf(HWND window) {
    RECT rect = {};
    GetClientRect(window, &rect);
    return rect;
}

SIZE SizeOf(const RECT &rect) {
    return {rect.right - rect.left, rect.bottom - rect.top};
}

POINT ThumbAt(HWND trackbar, int value) {
    RECT thumb = {};
    const LRESULT before = SendMessageW(trackbar, TBM_GETPOS, 0, 0);
    SendMessageW(trackbar, TBM_SETPOS, TRUE, value);
    SendMessageW(trackbar, TBM_GETTHUMBRECT, 0, reinterpret_cast<LPARAM>(&thumb));
    SendMessageW(trackbar, TBM_SETPOS, TRUE, before);
    return {(thumb.left + thumb.right) / 2, (thumb.top + thumb.bottom) / 2};
}

std::string TooltipOf(HWND dialog, HWND control) {
    HWND tips = nullptr;
    do
        tips = FindWindowExW(nullptr, tips, L"tooltips_class32", nullptr);
    while (tips && GetWindow(tips, GW_OWNER) != dialog);
    char text[300] = "";
    TTTOOLINFOA tool = {};
    tool.cbSize = TTTOOLINFOA_V1_SIZE;
    tool.hwnd = dialog;
    tool.uId = reinterpret_cast<UINT_PTR>(control);
    tool.lpszText = text;
    SendMessageA(tips, TTM_GETTEXTA, 0, reinterpret_cast<LPARAM>(&tool));
    return text;
}

std::string ClipboardBytes(UINT format) {
    std::string bytes;
    if (!OpenClipboard(nullptr))
        return bytes;
    const HANDLE block = GetClipboardData(format);
    if (const void *data = block ? GlobalLock(block) : nullptr) {
        bytes.assign(static_cast<const char *>(data), GlobalSize(block));
        GlobalUnlock(block);
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

INT_PTR PlayModal(DLGPROC real, const std::function<INT_PTR(DLGPROC)> &open,
                  const std::function<void(HWND)> &script, const DialogWatch &watch) {
    gPlay = {real, nullptr, &script, &watch};
    SetTimer(nullptr, 0, 1, PlayScript);
    return open(PlayedProc);
}

INT_PTR RunModal(int dialogId, DLGPROC procedure, const std::function<void(HWND)> &script,
                 const DialogWatch &watch, HINSTANCE module) {
    const HINSTANCE owner = module ? module : GetModuleHandleA(nullptr);
    const auto open = [&](DLGPROC played) {
        return DialogBoxParamA(owner, MAKEINTRESOURCEA(dialogId), nullptr, played, 0);
    };
    const auto play = [&](HWND window) {
        script(window);
        if (IsWindow(window))
            PostMessageA(window, WM_CLOSE, 0, 0);
    };
    const INT_PTR result = PlayModal(procedure, open, play, watch);
    PumpMessages();
    return result;
}
