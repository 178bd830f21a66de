#include "tests/ui/PairDialog.h"

#include "resources/DialogControlIds.h"
#include "ui/fields/ParameterTable.h"
#include "ui/window/DialogMessages.h"

#include <commctrl.h>
#include <utility>
#include <richedit.h>

namespace {

struct Creation {
    PairDialog *dialog;
    unsigned without;
};

void OnInitDialog(HWND window, const Creation &creation) {
    PairDialog *dialog = creation.dialog;
    dialog->window = window;
    dialog->tooltips = CreateWindowExA(0, TOOLTIPS_CLASSA, nullptr, WS_POPUP | TTS_ALWAYSTIP, 0, 0, 0, 0,
                                       window, nullptr, GetModuleHandleA(nullptr), nullptr);
    for (int i = 0; i < kParameterControlCount; ++i)
        if (creation.without >> i & 1) {
            DestroyWindow(GetDlgItem(window, gParameterControls[i].editId));
            DestroyWindow(GetDlgItem(window, gParameterControls[i].trackbarId));
        }
    dialog->otherControl = GetDlgItem(window, IDCANCEL);
    RegisterParameterTooltips(window, dialog->tooltips);
    BindParameterControls(window, &dialog->parameters);
}

INT_PTR CALLBACK PairDialogProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        const Creation *creation = reinterpret_cast<const Creation *>(lParam);
        SetWindowLongPtrA(window, DWLP_USER, reinterpret_cast<LONG_PTR>(creation->dialog));
        OnInitDialog(window, *creation);
        return FALSE;
    }
    PairDialog *dialog = reinterpret_cast<PairDialog *>(GetWindowLongPtrA(window, DWLP_USER));
    if (!dialog)
        return FALSE;
    if (message == kMsgParameterChanged) {
        ++dialog->changesSent;
        return TRUE;
    }
    if (message == kMsgParametersReplaced) {
        RefreshParameterControls();
        return TRUE;
    }
    if (message == WM_COMMAND && HIWORD(wParam) == EN_CHANGE)
        return OnParameterEditChanged(LOWORD(wParam));
    return FALSE;
}

int gBeeps = 0;

BOOL WINAPI CountBeep(UINT type) {
    gBeeps += type == MB_ICONHAND;
    return TRUE;
}

} // namespace

// The linker takes the import's address from here instead of from the import library.
extern "C" {
decltype(&CountBeep) __imp_MessageBeep = CountBeep;
}

int TakeBeeps() {
    return std::exchange(gBeeps, 0);
}

bool OpenPairDialog(PairDialog *dialog, const ParameterSet &parameters, unsigned without) {
    LoadLibraryA("msftedit.dll");
    InitCommonControls();
    *dialog = PairDialog();
    dialog->parameters = parameters;
    Creation creation = {dialog, without};
    if (!CreateDialogParamW(GetModuleHandleW(nullptr), kMainDialogName, nullptr, PairDialogProc,
                            reinterpret_cast<LPARAM>(&creation)))
        return false;
    ShowWindow(dialog->window, SW_SHOW);
    SetForegroundWindow(dialog->window);
    ResetPairDialog(dialog, dialog->parameters);
    return true;
}

void ResetPairDialog(PairDialog *dialog, const ParameterSet &parameters) {
    HoldCtrl(false);
    SetFocus(dialog->otherControl);
    dialog->parameters = parameters;
    BindParameterControls(dialog->window, &dialog->parameters);
    PumpMessages();
    dialog->changesSent = 0;
}

void ClosePairDialog(PairDialog *dialog) {
    HoldCtrl(false);
    if (dialog->window)
        DestroyWindow(dialog->window);
    dialog->window = nullptr;
    PumpMessages();
}

void PumpMessages() {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        const HWND root = GetAncestor(message.hwnd, GA_ROOT);
        if (root && IsDialogMessageA(root, &message))
            continue;
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

std::string EditText(int row) {
    char text[100] = "";
    GetWindowTextA(gParameterControls[row].edit, text, sizeof text);
    return text;
}

int TrackbarPositionOf(int row) {
    return static_cast<int>(SendMessageA(gParameterControls[row].trackbar, TBM_GETPOS, 0, 0));
}

void PressKey(HWND window, WPARAM key, int repeatCount) {
    SendMessageA(window, WM_KEYDOWN, key, repeatCount);
    SendMessageA(window, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001u));
}

void TypeText(HWND window, const char *text) {
    for (; *text; ++text)
        SendMessageA(window, WM_CHAR, static_cast<unsigned char>(*text), 1);
}

void HoldCtrl(bool down) {
    BYTE keys[256];
    GetKeyboardState(keys);
    keys[VK_CONTROL] = keys[VK_LCONTROL] = down ? 0x80 : 0;
    SetKeyboardState(keys);
}

void SendMouse(HWND window, UINT message, WPARAM buttons, POINT point) {
    SendMessageA(window, message, buttons,
                 MAKELPARAM(static_cast<WORD>(point.x), static_cast<WORD>(point.y)));
}

RECT ThumbOf(int row) {
    RECT thumb = {};
    SendMessageA(gParameterControls[row].trackbar, TBM_GETTHUMBRECT, 0, reinterpret_cast<LPARAM>(&thumb));
    return thumb;
}

POINT PointForValue(int row, int value) {
    const int before = TrackbarPositionOf(row);
    SendMessageA(gParameterControls[row].trackbar, TBM_SETPOS, TRUE, value);
    const RECT thumb = ThumbOf(row);
    SendMessageA(gParameterControls[row].trackbar, TBM_SETPOS, TRUE, before);
    return {(thumb.left + thumb.right) / 2, (thumb.top + thumb.bottom) / 2};
}
