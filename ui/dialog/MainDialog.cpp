#include "ui/dialog/MainDialog.h"

#include "diag/ErrorReport.h"
#include "resources/DialogControlIds.h"
#include "ui/dialog/CheckBoxBindings.h"
#include "ui/dialog/DialogTooltips.h"
#include "ui/dialog/DialogWheel.h"
#include "ui/dialog/EffectList.h"
#include "ui/dialog/MainDialogCommands.h"
#include "ui/dialog/MainDialogInit.h"
#include "ui/dialog/MainDialogState.h"
#include "ui/display/PreviewDisplay.h"
#include "ui/display/PreviewDisplayCursor.h"
#include "ui/fields/ParameterControls.h"
#include "ui/fields/ParameterLabels.h"
#include "ui/fields/ParameterValue.h"
#include "ui/history/DialogHistory.h"
#include "ui/look/DialogBackBuffer.h"
#include "ui/look/DialogLayout.h"
#include "ui/look/DialogPictures.h"
#include "ui/paint/PaintedControls.h"
#include "ui/preview/PreviewRequest.h"
#include "ui/preview/ProxyUpdateTask.h"
#include "ui/settings/SettingsMenu.h"
#include "ui/view/FirstView.h"
#include "ui/view/StateLine.h"
#include "ui/view/ViewTools.h"
#include "ui/view/ZoomField.h"
#include "ui/window/DesktopWindow.h"
#include "ui/window/DialogMessages.h"
#include "ui/window/ForgedMessages.h"
#include "ui/window/Palette.h"

#include <algorithm>
#include <commctrl.h>
#include <iterator>
#include <windowsx.h>

namespace {

constexpr UINT kLeastDpi = 48, kMostDpi = 960; // that a monitor may have

// What the system shows of a window before its first painting, or beyond its old edge, is black.
void PaintAtOnce(HWND dialog) {
    RedrawWindow(dialog, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
}

// At the first message with which it is on the screen.
void ShowPainted(HWND dialog) {
    if (!gMainDialog.isCloaked || !IsWindowVisible(dialog))
        return;
    gMainDialog.isCloaked = false;
    PaintAtOnce(dialog);
    CloakWindow(dialog, false);
}

void RelayOut(HWND dialog) {
    CloseZoomField();
    FitEffectList(dialog);
    LayOutDialog(dialog);
    ResizeDialogBackBuffer(dialog);
    PaintAtOnce(dialog);
    PostMessageW(dialog, kMsgRequestPreview, 0, 0);
}

// The message gives the client area, or what somebody made of it; the rectangle that is kept is the window's.
void OnSize(HWND dialog, WPARAM kind) {
    if (kind == SIZE_MINIMIZED)
        return;
    RECT window = {};
    GetWindowRect(dialog, &window);
    RECT &rect = gMainDialog.rect;
    rect.right = rect.left + window.right - window.left;
    rect.bottom = rect.top + window.bottom - window.top;
    RelayOut(dialog);
}

void OnWindowPosChanged(HWND dialog, const WINDOWPOS &position) {
    ShowPainted(dialog);
    if (IsIconic(dialog))
        return;
    GetWindowRect(dialog, &gMainDialog.rect);
    if (!(position.flags & SWP_NOSIZE))
        RelayOut(dialog);
}

bool OnGetMinMaxInfo(MINMAXINFO *info) {
    const SIZE minimum = DialogMinimumSize();
    if (minimum.cx == 0) // not laid out
        return false;
    info->ptMinTrackSize = {minimum.cx, minimum.cy};
    return true;
}

// Every control may move when the size changes, so that no old pixel is worth keeping: the system would show
// it in the wrong place until the next painting.
void OnNcCalcSize(HWND dialog, WPARAM wParam, LPARAM lParam) {
    DefWindowProcW(dialog, WM_NCCALCSIZE, wParam, lParam);
    LRESULT result = 0;
    if (wParam) {
        NCCALCSIZE_PARAMS &sizes = *reinterpret_cast<NCCALCSIZE_PARAMS *>(lParam);
        const POINT corner = {sizes.rgrc[0].left, sizes.rgrc[0].top};
        sizes.rgrc[1] = sizes.rgrc[2] = {corner.x, corner.y, corner.x + 1, corner.y + 1};
        result = WVR_VALIDRECTS;
    }
    SetWindowLongPtrW(dialog, DWLP_MSGRESULT, result);
}

INT_PTR OnControlColors(UINT message, HWND control, HDC dc) {
    if (message != WM_CTLCOLORSTATIC || GetDlgCtrlID(control) != kZoomTextId || !gMainDialog.zoomTextBrush)
        return reinterpret_cast<INT_PTR>(OnControlColor(message, dc));
    ControlBrush(dc, kFaceColor, kTextColor);
    return reinterpret_cast<INT_PTR>(gMainDialog.zoomTextBrush);
}

INT_PTR OnNotify(HWND dialog, const NMHDR &notice) {
    LRESULT result = 0;
    if (!OnControlNotify(notice, &result))
        return FALSE;
    SetWindowLongPtrW(dialog, DWLP_MSGRESULT, result);
    return TRUE;
}

void OnColorsChanged(HWND dialog) {
    ReadLook();
    DressMainDialog(dialog);
    if (const HBRUSH brush = CreateSolidBrush(ColorOf(kFaceColor))) {
        if (gMainDialog.zoomTextBrush)
            DeleteObject(gMainDialog.zoomTextBrush);
        gMainDialog.zoomTextBrush = brush;
    }
    ResizeDialogBackBuffer(dialog);
    LoadDialogPictures(dialog);
    RedrawWindow(dialog, nullptr, nullptr, RDW_INVALIDATE | RDW_FRAME | RDW_ALLCHILDREN);
}

// The system tells only the windows of the top, and controls keep colours, fonts and lines a wheel's step.
void TellControls(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    for (HWND control = GetWindow(dialog, GW_CHILD); control; control = GetWindow(control, GW_HWNDNEXT))
        SendMessageW(control, message, wParam, lParam);
    SendMessageW(gMainDialog.tooltips, message, wParam, lParam);
}

void OnDpiChanged(HWND dialog, UINT dpi, const RECT &suggested) {
    if (dpi < kLeastDpi || dpi > kMostDpi)
        return;
    if (OnDialogDpiChanged(dialog, dpi, suggested))
        LoadDialogPictures(dialog);
    UseBoldGroupFont(dialog);
    FitEffectList(dialog);
    FitTooltipsToScale(gMainDialog.tooltips);
}

// What came last may be anybody's word.
void RefreshStateLine(HWND dialog) {
    ShowStateLine(dialog, DialogParameters()->threshold, gMainDialog.progressTotal != 0 && IsPreviewInWork(),
                  NoColorTextOf(GetFocus()));
}

void OnParameterChanged(HWND dialog) {
    NoteDialogState();
    ReselectSettings(dialog);
    PostMessageW(dialog, kMsgRequestPreview, 0, 0);
}

void OnParametersReplaced(HWND dialog) {
    RefreshParameterControls();
    ShowEffectType(dialog, DialogParameters()->effectType);
    RefreshCheckBoxes(dialog);
    ++gFieldGesture; // a set is a step of its own, also when it changes but the value typed last
    NoteDialogState();
    ++gFieldGesture;
}

// Lights that were hidden or shown are seen to here: every such change asks for a preview.
void OnPreviewRequested(HWND dialog) {
    NoteDialogState();
    RefreshStateLine(dialog);
    RequestPreview(MakePreviewRequest(CurrentPreviewGeometry(), gMainDialog.previewOn, *DialogParameters()));
}

void OnProgress(HWND dialog, WPARAM position, LPARAM total) {
    const HWND bar = GetDlgItem(dialog, kProgressId);
    if (total == 0) {
        SendMessageW(bar, PBM_SETPOS, 1, 0);
        SendMessageW(bar, PBM_SETPOS, 0, 0);
        SendMessageW(bar, PBM_SETRANGE32, 0, 0);
        gMainDialog.progress = 0;
        gMainDialog.progressTotal = 0;
        return;
    }
    const DWORD shown = static_cast<DWORD>(std::min<LPARAM>(static_cast<LPARAM>(position), total));
    if (total != gMainDialog.progressTotal)
        SendMessageW(bar, PBM_SETRANGE32, 0, total);
    if (shown != gMainDialog.progress)
        SendMessageW(bar, PBM_SETPOS, shown, 0);
    gMainDialog.progress = shown;
    gMainDialog.progressTotal = total;
}

void OnTableReady(HWND dialog) {
    if (OnPreviewTableReady()) {
        RedrawEffectRows(dialog); // their pictures are there now
        NoteLightsFound();
        if (!gMainDialog.isTouched)
            ShowSomeStar(DialogParameters()->threshold);
    }
    RefreshStateLine(dialog);
}

INT_PTR HandlePrivateMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case kMsgParameterChanged:
        OnParameterChanged(dialog);
        return TRUE;
    case kMsgParametersReplaced:
        OnParametersReplaced(dialog);
        return TRUE;
    case kMsgRequestPreview:
        OnPreviewRequested(dialog);
        return TRUE;
    case kMsgProgress:
        OnProgress(dialog, wParam, lParam);
        RefreshStateLine(dialog);
        return TRUE;
    case kMsgTableReady:
        OnTableReady(dialog);
        return TRUE;
    }
    return FALSE;
}

// Anybody can send a dialog anything. A message that comes with a record has one.
bool IsForged(HWND dialog, UINT message, LPARAM lParam) {
    switch (message) {
    case WM_WINDOWPOSCHANGED:
    case WM_GETMINMAXINFO:
    case WM_NCCALCSIZE:
    case WM_NOTIFY:
    case WM_DPICHANGED:
        return lParam == 0;
    case WM_INITDIALOG:
        return true; // it had its own before
    }
    return IsForgedDestruction(dialog, message);
}

INT_PTR HandleMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_DESTROY:
        ReleaseMainDialog();
        return TRUE;
    case WM_ENABLE:
        if (wParam)
            FreeHost();
        return FALSE;
    case WM_SIZE:
        OnSize(dialog, wParam);
        return TRUE;
    case WM_WINDOWPOSCHANGED:
        OnWindowPosChanged(dialog, *reinterpret_cast<const WINDOWPOS *>(lParam));
        return TRUE;
    case WM_PAINT:
        PaintDialogFromBackBuffer(dialog);
        return TRUE;
    case WM_PRINTCLIENT:
        PrintDialogFromBackBuffer(dialog, reinterpret_cast<HDC>(wParam));
        return TRUE;
    case WM_ERASEBKGND:
        SetWindowLongPtrW(dialog, DWLP_MSGRESULT, 1);
        return TRUE;
    case WM_ACTIVATEAPP:
        if (!wParam)
            OnPreviewDeactivated();
        return TRUE;
    case WM_ACTIVATE:
        if (LOWORD(wParam) == WA_INACTIVE)
            OnPreviewDeactivated();
        return FALSE;
    case WM_ENTERMENULOOP: // which keeps the keys to itself
        OnPreviewDeactivated();
        return FALSE;
    case WM_GETMINMAXINFO:
        return OnGetMinMaxInfo(reinterpret_cast<MINMAXINFO *>(lParam));
    case WM_NCCALCSIZE:
        OnNcCalcSize(dialog, wParam, lParam);
        return TRUE;
    case WM_COMMAND:
        if (HIWORD(wParam) == EN_SETFOCUS || HIWORD(wParam) == EN_KILLFOCUS)
            RefreshStateLine(dialog);
        return OnDialogCommand(dialog, LOWORD(wParam), HIWORD(wParam), lParam);
    case WM_HSCROLL:
    case WM_VSCROLL:
        return OnPreviewScroll(reinterpret_cast<HWND>(lParam), LOWORD(wParam));
    case WM_MOUSEWHEEL:
        OnDialogWheel(wParam, lParam);
        return TRUE;
    case WM_SETCURSOR:
        if (LOWORD(lParam) == HTCLIENT && HIWORD(lParam) == WM_MOUSEMOVE)
            PrepareTooltip(dialog, gMainDialog.tooltips, reinterpret_cast<HWND>(wParam));
        return FALSE;
    case WM_LBUTTONDOWN:
        return OnParameterPicturePressed(dialog, {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
    case WM_TIMER:
        return OnParameterPictureTimer(dialog, wParam);
    case WM_LBUTTONUP:
    case WM_CAPTURECHANGED:
        return OnParameterPictureReleased(dialog);
    case WM_LBUTTONDBLCLK:
        return OnParameterLabelDoubleClick(dialog, {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
    case WM_DRAWITEM:
        return lParam && DrawEffectRow(*reinterpret_cast<const DRAWITEMSTRUCT *>(lParam));
    case WM_CTLCOLORDLG:
    case WM_CTLCOLORSTATIC:
    case WM_CTLCOLORBTN:
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORLISTBOX:
        return OnControlColors(message, reinterpret_cast<HWND>(lParam), reinterpret_cast<HDC>(wParam));
    case WM_NOTIFY:
        return OnNotify(dialog, *reinterpret_cast<const NMHDR *>(lParam));
    case WM_DPICHANGED:
        OnDpiChanged(dialog, HIWORD(wParam), *reinterpret_cast<const RECT *>(lParam));
        return TRUE;
    case WM_SETTINGCHANGE:
        TellControls(dialog, message, wParam, lParam);
        ReadLook();
        if (IsDarkLook() != gMainDialog.isDark)
            OnColorsChanged(dialog);
        return FALSE;
    case WM_SYSCOLORCHANGE:
        TellControls(dialog, message, wParam, lParam);
        OnColorsChanged(dialog);
        return TRUE;
    case WM_THEMECHANGED: // the system tells the controls itself
        OnColorsChanged(dialog);
        return TRUE;
    }
    return HandlePrivateMessage(dialog, message, wParam, lParam);
}

INT_PTR HandleDialogMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (dialog == gMainDialog.window)
        return IsForged(dialog, message, lParam) ? TRUE : HandleMessage(dialog, message, wParam, lParam);
    if (message == WM_INITDIALOG) {
        if (gMainDialog.window)
            EndDialog(dialog, IDCANCEL);
        else
            InitializeMainDialog(dialog);
    }
    return FALSE;
}

// Ending the dialog gives the host's window back to the user. While a box of ours is still open above the
// dialog, the host's call goes on, and its window must not be used.
void HoldHost(HWND dialog) {
    const HWND host = GetWindow(dialog, GW_OWNER);
    if (!host || !IsWindowEnabled(host))
        return;
    EnableWindow(host, FALSE);
    gMainDialog.heldHost = host;
}

void EndForFatalError(HWND dialog) {
    if (gFatalErrorStatus == 0 || dialog != gMainDialog.window || gMainDialog.endedForFatal)
        return;
    gMainDialog.endedForFatal = true;
    EndMenu();
    const bool isCovered = !IsWindowEnabled(dialog);
    EndMainDialog(dialog, IDCANCEL);
    if (isCovered)
        HoldHost(dialog);
}

// Messages that the dialog leaves to the system, and whose sender acts on the system's answer: a plain 0
// would, for instance, keep the session from ending.
bool IsQuestionToSystem(UINT message) {
    constexpr UINT questions[] = {WM_QUERYENDSESSION, WM_GETTEXT,   WM_GETTEXTLENGTH, WM_GETFONT,
                                  WM_GETICON,         WM_GETOBJECT, WM_NCHITTEST,     WM_QUERYUISTATE,
                                  WM_PRINT,           DM_GETDEFID,  WM_GETHOTKEY,     WM_GETTITLEBARINFOEX};
    return std::find(std::begin(questions), std::end(questions), message) != std::end(questions);
}

// So that a thread that sends a message never waits for what the dialog does next.
void ReplyToOtherThread(UINT message, INT_PTR result) {
    if (!IsQuestionToSystem(message) &&
        (InSendMessageEx(nullptr) & (ISMEX_SEND | ISMEX_REPLIED)) == ISMEX_SEND)
        ReplyMessage(result);
}

} // namespace

INT_PTR CALLBACK BrillatrixProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    const INT_PTR result = HandleDialogMessage(dialog, message, wParam, lParam);
    EndForFatalError(dialog);
    ReplyToOtherThread(message, result);
    return result;
}
