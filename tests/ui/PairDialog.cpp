#include "tests/ui/PairDialog.h"

#include "ui/DialogMessages.h"

#include <commctrl.h>
#include <richedit.h>

namespace {

constexpr int kRowHeight = 28, kTop = 10, kLabelLeft = 10, kEditLeft = 170, kTrackbarLeft = 230;
constexpr int kDialogWidth = 470, kDialogHeight = 370, kOtherControlId = 2;

constexpr const char *kLabels[kParameterControlCount] = {
    "Threshold",         "Intensity",        "Length",           "Angle",
    "Number of Points",  "Spike Sharpness",  "Color Saturation", "Rainbow Intensity",
    "Rainbow Frequency", "Secondary Spikes", "Soft Flare"};

struct Creation {
    PairDialog *dialog;
    const char *editClass;
    unsigned without;
};

HWND AddControl(HWND parent, const char *className, const char *text, DWORD style, RECT place, int id) {
    const HWND control = CreateWindowExA(0, className, text, WS_CHILD | WS_VISIBLE | style, place.left,
                                         place.top, place.right - place.left, place.bottom - place.top,
                                         parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                                         GetModuleHandleA(nullptr), nullptr);
    SendMessageA(control, WM_SETFONT, reinterpret_cast<WPARAM>(GetStockObject(DEFAULT_GUI_FONT)), FALSE);
    return control;
}

void AddPair(HWND window, int index, const char *editClass) {
    const ParameterControl &row = gParameterControls[index];
    const LONG top = kTop + index * kRowHeight;
    AddControl(window, "STATIC", kLabels[index], SS_LEFT, {kLabelLeft, top + 3, kEditLeft, top + 20}, -1);
    AddControl(window, editClass, "", WS_BORDER | WS_TABSTOP | ES_AUTOHSCROLL,
               {kEditLeft, top, kEditLeft + 50, top + 20}, row.editId);
    AddControl(window, TRACKBAR_CLASSA, "", TBS_HORZ | TBS_NOTICKS,
               {kTrackbarLeft, top, kTrackbarLeft + 220, top + 24}, row.trackbarId);
}

void OnInitDialog(HWND window, const Creation &creation) {
    PairDialog *dialog = creation.dialog;
    dialog->window = window;
    dialog->tooltips =
        CreateWindowExA(0, TOOLTIPS_CLASSA, nullptr, WS_POPUP | TTS_ALWAYSTIP, CW_USEDEFAULT, CW_USEDEFAULT,
                        CW_USEDEFAULT, CW_USEDEFAULT, window, nullptr, GetModuleHandleA(nullptr), nullptr);
    for (int i = 0; i < kParameterControlCount; ++i)
        if (!(creation.without >> i & 1))
            AddPair(window, i, creation.editClass);
    const LONG top = kTop + kParameterControlCount * kRowHeight;
    dialog->otherControl = AddControl(window, "BUTTON", "Cancel", WS_TABSTOP,
                                      {kTrackbarLeft, top, kTrackbarLeft + 80, top + 24}, kOtherControlId);
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

void LoadControlClasses() {
    LoadLibraryA("riched20.dll");
    LoadLibraryA("msftedit.dll");
    INITCOMMONCONTROLSEX classes = {sizeof classes, ICC_BAR_CLASSES | ICC_WIN95_CLASSES};
    InitCommonControlsEx(&classes);
}

} // namespace

bool OpenPairDialog(PairDialog *dialog, const char *editClass, const ParameterSet &parameters,
                    unsigned without) {
    LoadControlClasses();
    *dialog = PairDialog();
    dialog->parameters = parameters;
    // A template without controls: header, no menu, the dialog class, no caption.
    struct {
        DLGTEMPLATE header;
        WORD menu, windowClass, caption;
    } description = {};
    description.header.style = WS_POPUP | WS_CAPTION | WS_SYSMENU;
    Creation creation = {dialog, editClass, without};
    if (!CreateDialogIndirectParamA(GetModuleHandleA(nullptr), &description.header, nullptr, PairDialogProc,
                                    reinterpret_cast<LPARAM>(&creation)))
        return false;
    SetWindowPos(dialog->window, nullptr, 20, 20, kDialogWidth, kDialogHeight, SWP_NOZORDER);
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

POINT ThumbCenter(int row) {
    RECT thumb = {};
    SendMessageA(gParameterControls[row].trackbar, TBM_GETTHUMBRECT, 0, reinterpret_cast<LPARAM>(&thumb));
    return {(thumb.left + thumb.right) / 2, (thumb.top + thumb.bottom) / 2};
}

POINT PointForValue(int row, int value) {
    const int before = TrackbarPositionOf(row);
    SendMessageA(gParameterControls[row].trackbar, TBM_SETPOS, TRUE, value);
    const POINT point = ThumbCenter(row);
    SendMessageA(gParameterControls[row].trackbar, TBM_SETPOS, TRUE, before);
    return point;
}
