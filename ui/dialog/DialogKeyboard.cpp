#include "ui/dialog/DialogKeyboard.h"

#include "diag/module/ModuleInstance.h"
#include "resources/DialogControlIds.h"
#include "ui/dialog/DialogWheel.h"
#include "ui/dialog/MainDialogState.h"
#include "ui/display/PreviewComparison.h"
#include "ui/display/PreviewDisplayCursor.h"
#include "ui/display/PreviewDisplayMouse.h"
#include "ui/display/PreviewDisplayState.h"
#include "ui/fields/ParameterTable.h"

#include <algorithm>
#include <commctrl.h>
#include <iterator>

namespace {

HACCEL gAccelerators, gEditAccelerators; // the second are nobody's letters and work everywhere

bool IsKeyboardMessage(UINT message) {
    return message >= WM_KEYFIRST && message <= WM_KEYLAST;
}

bool IsKeyDown(UINT message) {
    return message == WM_KEYDOWN || message == WM_SYSKEYDOWN;
}

bool IsKeyUp(UINT message) {
    return message == WM_KEYUP || message == WM_SYSKEYUP;
}

// Fields of numbers have no use for the space bar.
bool IsParameterControl(HWND window) {
    return std::any_of(std::begin(gParameterControls), std::end(gParameterControls),
                       [window](const ParameterControl &row) {
                           return window && (row.edit == window || row.trackbar == window);
                       });
}

// The preview's own keys, while another control has the focus. True when the control must not see the key.
bool OnPreviewKey(const MSG &message) {
    if (message.message == WM_KEYDOWN && message.wParam == VK_ESCAPE && CancelPreviewGesture())
        return true;
    if (message.hwnd == gPreviewDisplay.window || !(IsKeyDown(message.message) || IsKeyUp(message.message)))
        return false;
    const bool isPanKey = message.wParam == VK_SPACE && IsParameterControl(message.hwnd);
    // Whoever has the focus when the space bar comes up, it is held no longer.
    const bool isReleased = message.wParam == VK_SPACE && IsKeyUp(message.message);
    if (message.wParam == VK_MENU || message.wParam == VK_CONTROL || isPanKey || isReleased)
        OnPreviewModifierKey(message.wParam, IsKeyDown(message.message));
    return isPanKey;
}

// A letter like the others: a list may claim it, and with Ctrl or Alt it is none.
bool OnCompareKey(const MSG &message) {
    if (message.wParam != kCompareKey)
        return false;
    if (IsKeyUp(message.message))
        EndComparison();
    if (message.message != WM_KEYDOWN || gMainDialog.comboClaimsKeys || GetKeyState(VK_CONTROL) < 0)
        return false;
    BeginComparison();
    return true;
}

bool IsPointerOverPreview() {
    POINT pointer = {};
    RECT display = {};
    return GetCursorPos(&pointer) && GetWindowRect(gPreviewDisplay.window, &display) &&
           PtInRect(&display, pointer);
}

// An Alt that was held for a tool must not open the system menu when it comes up.
bool IsAltOfTool(const MSG &message) {
    return message.message == WM_SYSKEYUP && message.wParam == VK_MENU && IsPointerOverPreview();
}

// The frame's mnemonic would lead to what follows the frame, and that is not the list of settings.
bool TakeSettingsMnemonic(const MSG &message) {
    if (message.message != WM_SYSCHAR || (message.wParam != 't' && message.wParam != 'T'))
        return false;
    SetFocus(GetDlgItem(gMainDialog.window, kSettingsComboId));
    return true;
}

bool Translate(HACCEL accelerators, MSG *message) {
    return accelerators && TranslateAcceleratorW(gMainDialog.window, accelerators, message) != 0;
}

bool TakeKeyboardMessage(MSG *message) {
    if (GetActiveWindow() != gMainDialog.window)
        return false;
    if (OnPreviewKey(*message) || OnCompareKey(*message) || IsAltOfTool(*message) ||
        TakeSettingsMnemonic(*message))
        return true;
    return Translate(gEditAccelerators, message) ||
           (!gMainDialog.comboClaimsKeys && Translate(gAccelerators, message));
}

bool IsUse(UINT message) {
    return IsKeyDown(message) || (message > WM_MOUSEMOVE && message <= WM_MOUSELAST);
}

LRESULT CALLBACK FilterMessage(int code, WPARAM wParam, LPARAM lParam) {
    MSG *message = reinterpret_cast<MSG *>(lParam);
    if (code == MSGF_DIALOGBOX && message && gMainDialog.window) {
        gMainDialog.isTouched = gMainDialog.isTouched || IsUse(message->message);
        if (IsKeyDown(message->message)) // who types does not read on
            SendMessageW(gMainDialog.tooltips, TTM_POP, 0, 0);
        if (IsKeyboardMessage(message->message) ? TakeKeyboardMessage(message)
                                                : TakeWheel(gMainDialog.window, *message))
            return TRUE;
    }
    return CallNextHookEx(gMainDialog.hook, code, wParam, lParam);
}

} // namespace

void InstallKeyboardHook() {
    gAccelerators = LoadAcceleratorsW(ModuleInstance(), MAKEINTRESOURCEW(kDialogAcceleratorsId));
    gEditAccelerators = LoadAcceleratorsW(ModuleInstance(), MAKEINTRESOURCEW(kEditAcceleratorsId));
    gMainDialog.hook = SetWindowsHookExW(WH_MSGFILTER, FilterMessage, nullptr, GetCurrentThreadId());
}

void RemoveKeyboardHook() {
    if (gMainDialog.hook)
        UnhookWindowsHookEx(gMainDialog.hook);
    gMainDialog.hook = nullptr;
    gAccelerators = gEditAccelerators = nullptr;
}

// Meant so: once the list of settings has had the focus, only the effect list gives the letters free again,
// by losing it.
void OnComboFocus(int controlId, bool gained) {
    gMainDialog.comboClaimsKeys = gained || controlId == kSettingsComboId;
}
