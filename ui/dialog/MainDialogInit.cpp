#include "ui/dialog/MainDialogInit.h"

#include "diag/ErrorReport.h"
#include "resources/DialogControlIds.h"
#include "storage/UISettings.h"
#include "ui/about/MakersLogo.h"
#include "ui/about/UpdateLink.h"
#include "ui/dialog/AccessibleNames.h"
#include "ui/dialog/CheckBoxBindings.h"
#include "ui/dialog/DialogKeyboard.h"
#include "ui/dialog/DialogTooltips.h"
#include "ui/dialog/EffectList.h"
#include "ui/dialog/MainDialogState.h"
#include "ui/display/PreviewDisplay.h"
#include "ui/fields/ParameterControls.h"
#include "ui/fields/ParameterTable.h"
#include "ui/fields/ParameterValue.h"
#include "ui/history/DialogHistory.h"
#include "ui/look/CompareButton.h"
#include "ui/look/CornerIcon.h"
#include "ui/look/DialogBackBuffer.h"
#include "ui/look/DialogLayout.h"
#include "ui/look/DialogPictures.h"
#include "ui/look/PictureButton.h"
#include "ui/look/PreviewFrame.h"
#include "ui/paint/PaintedControls.h"
#include "ui/settings/ParameterSetList.h"
#include "ui/settings/SettingsMenu.h"
#include "ui/view/StateLine.h"
#include "ui/window/DesktopWindow.h"
#include "ui/window/DialogMessages.h"
#include "ui/window/DropDownList.h"
#include "ui/window/Palette.h"
#include "ui/window/WindowPlacement.h"

namespace {

constexpr wchar_t kCustomSettings[] = L"(Custom)"; // while no saved set has the present values
constexpr wchar_t kHelpCaption[] = L"Help and Support";

RECT RectOfScreenRect(const ScreenRect &rect) {
    return {rect.left, rect.top, rect.right, rect.bottom};
}

// The effect tools wait for the light source table. Alt reveals nothing yet: that state is the display's,
// which begins anew with each dialog.
void ResetViewTool() {
    if (GetViewTool() == kToolHide || GetViewTool() == kToolShow)
        SetViewTool(kToolZoom);
}

void SwitchPreviewOn(HWND dialog) {
    gMainDialog.previewOn = true;
    SetPreviewFlag(1);
    CheckDlgButton(dialog, kPreviewOnId, BST_CHECKED);
}

void ShowFocusMarks(HWND dialog) {
    for (const int controlId : {IDOK, IDCANCEL, kPreviewOnId, kHelpId})
        SendDlgItemMessageW(dialog, controlId, WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS), 0);
    SetDlgItemTextW(dialog, kHelpId, kHelpCaption);
}

void SetUpControls(HWND dialog) {
    SubclassMakersLogo(dialog);
    MakePictureClickOnRelease(GetDlgItem(dialog, kProductLogoId));
    for (const int tool : {kPanIconId, kZoomIconId, kHideIconId, kShowIconId})
        MakePictureReachable(GetDlgItem(dialog, tool));
    gMainDialog.tooltips = CreateDialogTooltips(dialog);
    SubclassDropDownList(GetDlgItem(dialog, kSettingsComboId), kCustomSettings);
    SubclassDropDownList(GetDlgItem(dialog, kEffectComboId), nullptr);
    FillSettingsList(dialog);
    FillEffectList(dialog, DialogParameters()->effectType);
    BindCheckBoxes(dialog, DialogParameters());
    BindParameterControls(dialog, DialogParameters());
    SelectFittingSettings(dialog); // the controls have brought the values into their ranges
    SubclassCornerIcon(dialog);
    SubclassPreviewFrame(dialog);
    AttachPreviewDisplay(
        dialog, {gDialogSubject.image, gDialogSubject.iccProfile, gDialogSubject.iccProfileBytes, dialog},
        ShowDialogPicture);
    NameControls(dialog);
    BeginDialogHistory(dialog, DialogParameters());
}

// In the middle of the work area of the monitor that the host's window is on.
void CenterDialog(HWND dialog) {
    const HWND owner = GetWindow(dialog, GW_OWNER);
    MONITORINFO monitor = {};
    monitor.cbSize = sizeof monitor;
    RECT rect = gMainDialog.rect;
    if (GetMonitorInfoW(MonitorFromWindow(owner ? owner : dialog, MONITOR_DEFAULTTONEAREST), &monitor)) {
        const RECT &work = monitor.rcWork;
        OffsetRect(&rect, (work.left + work.right - rect.left - rect.right) / 2,
                   (work.top + work.bottom - rect.top - rect.bottom) / 2);
        rect = MoveIntoArea(rect, work);
    }
    SetWindowPos(dialog, nullptr, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top,
                 SWP_NOZORDER | SWP_NOACTIVATE);
    GetWindowRect(dialog, &gMainDialog.rect);
    SetDialogRect(
        {gMainDialog.rect.left, gMainDialog.rect.top, gMainDialog.rect.right, gMainDialog.rect.bottom});
}

void PlaceDialog(HWND dialog) {
    const ScreenRect saved = GetDialogRect();
    if (IsEmptyScreenRect(saved))
        return CenterDialog(dialog);
    const RECT rect = PlaceOnMonitor(RectOfScreenRect(saved), InvisibleFrame(dialog));
    // Twice: the first move may reach a monitor of another scale, where the system proposes another size.
    for (int i = 0; i < 2; ++i)
        SetWindowPos(dialog, nullptr, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top,
                     SWP_NOZORDER | SWP_NOACTIVATE);
}

void FocusFirstControl(HWND dialog) {
    const ParameterControl &threshold = gParameterControls[kThreshold];
    if (!IsBound(threshold)) {
        SetFocus(GetDlgItem(dialog, IDOK));
        return;
    }
    SelectEditText(threshold);
    SetFocus(threshold.edit);
}

} // namespace

void InitializeMainDialog(HWND dialog) {
    gMainDialog = {};
    gMainDialog.window = dialog;
    TakeMessageBoxes(dialog, &gMainDialog.messageBoxOwner);
    ReadLook();
    gMainDialog.zoomTextBrush = CreateSolidBrush(ColorOf(kFaceColor));
    CreateDialogBackBuffer(dialog);
    InstallKeyboardHook();
    ResetViewTool();
    SwitchPreviewOn(dialog);
    ShowFocusMarks(dialog);
    AddUpdateLink(dialog);
    AddStateLine(dialog);
    AddCompareButton(dialog);
    RecordDialogLayout(dialog);
    LoadDialogPictures(dialog); // for the scale of the layout
    UseBoldGroupFont(dialog);
    GetWindowRect(dialog, &gMainDialog.rect);
    SetUpControls(dialog);
    DressMainDialog(dialog);
    if (gFatalErrorStatus != 0)
        return;
    PlaceDialog(dialog);
    FocusFirstControl(dialog);
    CloakWindow(dialog, true);
    gMainDialog.isCloaked = true;
    PostMessageW(dialog, kMsgRequestPreview, 0, 0);
}

void DressMainDialog(HWND dialog) {
    gMainDialog.isDark = IsDarkLook();
    DressControls(dialog);
    DressTooltips(gMainDialog.tooltips);
    DressCaption(dialog);
}

void FreeHost() {
    if (gMainDialog.heldHost)
        EnableWindow(gMainDialog.heldHost, TRUE);
    gMainDialog.heldHost = nullptr;
}

void ReleaseMainDialog() {
    FreeHost();
    const HWND dialog = gMainDialog.window;
    DeleteObject(gMainDialog.boldFont);
    RemoveKeyboardHook();
    EndDialogHistory();
    FreeParameterSetList(dialog);
    ReleaseCheckBoxes();
    ForgetControlNames(dialog);
    FreeDialogPictures(dialog);
    FreeDialogLayout();
    FreeDialogBackBuffer();
    if (gMainDialog.zoomTextBrush)
        DeleteObject(gMainDialog.zoomTextBrush);
    GiveMessageBoxesBack(&gMainDialog.messageBoxOwner);
    gMainDialog = {};
}

void UseBoldGroupFont(HWND dialog) {
    const HFONT font = reinterpret_cast<HFONT>(SendDlgItemMessageW(dialog, IDOK, WM_GETFONT, 0, 0));
    LOGFONTW description = {};
    if (!font || !GetObjectW(font, sizeof description, &description))
        return;
    description.lfWeight = FW_BOLD;
    const HFONT bold = CreateFontIndirectW(&description);
    if (!bold)
        return;
    for (const int controlId : {kSettingsPanelId, kSpikesGroupId, kColorGroupId, kSecondaryGroupId})
        SendDlgItemMessageW(dialog, controlId, WM_SETFONT, reinterpret_cast<WPARAM>(bold), TRUE);
    DeleteObject(gMainDialog.boldFont); // of the last scale
    gMainDialog.boldFont = bold;
}
