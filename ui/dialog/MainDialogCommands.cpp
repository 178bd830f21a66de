#include "ui/dialog/MainDialogCommands.h"

#include "resources/DialogControlIds.h"
#include "storage/UISettings.h"
#include "ui/about/AboutBox.h"
#include "ui/dialog/CheckBoxBindings.h"
#include "ui/dialog/DialogKeyboard.h"
#include "ui/dialog/DialogKeys.h"
#include "ui/dialog/EffectList.h"
#include "ui/dialog/MainDialogState.h"
#include "ui/fields/ParameterControls.h"
#include "ui/fields/ParameterLabels.h"
#include "ui/settings/SettingsMenu.h"
#include "ui/view/ViewMenu.h"
#include "ui/view/ViewTools.h"
#include "ui/view/ZoomField.h"
#include "ui/window/DialogMessages.h"
#include "ui/window/DropDownList.h"

namespace {

constexpr int kAcceleratorNotification = 1;

void OnOk(HWND dialog) {
    const RECT &rect = gMainDialog.rect;
    SetDialogRect({rect.left, rect.top, rect.right, rect.bottom});
    SaveUISettings();
    EndMainDialog(dialog, IDOK);
}

// The settings file keeps what it says: meant so.
void OnCancel(HWND dialog) {
    gDialogSubject.isCancelled = true;
    EndMainDialog(dialog, IDCANCEL);
}

// A button that had the focus was the default one meanwhile; Enter goes to OK again.
void OnButtonLostFocus(HWND dialog, int controlId) {
    if (gMainDialog.isEnding)
        return;
    SendDlgItemMessageW(dialog, controlId, BM_SETSTYLE, BS_PUSHBUTTON, TRUE);
    SendDlgItemMessageW(dialog, IDOK, BM_SETSTYLE, BS_DEFPUSHBUTTON, TRUE);
}

void OnButton(HWND dialog, int controlId, int notification) {
    if (notification == BN_KILLFOCUS && controlId != IDOK)
        OnButtonLostFocus(dialog, controlId);
    if (notification != BN_CLICKED)
        return;
    if (controlId == IDOK)
        OnOk(dialog);
    else if (controlId == IDCANCEL)
        OnCancel(dialog);
    else
        ShowAboutBox(dialog);
}

void OnPreviewBox(HWND dialog) {
    gMainDialog.previewOn = IsDlgButtonChecked(dialog, kPreviewOnId) == BST_CHECKED;
    SetPreviewFlag(gMainDialog.previewOn);
    PostMessageW(dialog, kMsgRequestPreview, 0, 0);
}

void OnSettingsCombo(HWND dialog, int notification) {
    if (notification == CBN_SELCHANGE)
        OnSettingsChosen(dialog);
    else if (notification == CBN_DROPDOWN)
        FitDropDownList(GetDlgItem(dialog, kSettingsComboId));
    else if (notification == CBN_CLOSEUP)
        OnSettingsListClosed(dialog);
    else if (notification == CBN_SETFOCUS || notification == CBN_KILLFOCUS)
        OnComboFocus(kSettingsComboId, notification == CBN_SETFOCUS);
}

void OnEffectCombo(HWND dialog, int notification) {
    if (notification == CBN_SELCHANGE)
        OnEffectChosen(dialog, DialogParameters());
    else if (notification == CBN_SETFOCUS || notification == CBN_KILLFOCUS)
        OnComboFocus(kEffectComboId, notification == CBN_SETFOCUS);
}

// The pictures of the view tools and the zoom. False for a control that is none of them.
bool OnPictureClicked(HWND dialog, int controlId, bool isDouble) {
    switch (controlId) {
    case kPanIconId:
    case kPanLabelId:
        SelectViewTool(kToolPan);
        return true;
    case kZoomIconId:
    case kZoomLabelId:
        SelectViewTool(kToolZoom);
        if (isDouble)
            ShowActualPixels();
        return true;
    case kHideIconId:
    case kHideLabelId:
        SelectEffectTool(kToolHide);
        return true;
    case kShowIconId:
    case kShowLabelId:
        SelectEffectTool(kToolShow);
        return true;
    case kZoomTextId:
        if (GetKeyState(VK_CONTROL) < 0)
            OpenZoomField(dialog);
        else
            ShowZoomMenuAtText(dialog);
        return true;
    case kZoomArrowId:
        ShowZoomMenuAtArrow(dialog);
        return true;
    case kZoomOutButtonId:
        ZoomOut();
        return true;
    case kZoomInButtonId:
        ZoomIn();
        return true;
    }
    return false;
}

bool OnPicture(HWND dialog, int controlId, int notification) {
    if (notification == STN_CLICKED && controlId == kProductLogoId) {
        ShowAboutBox(dialog);
        return true;
    }
    if (notification == STN_CLICKED && controlId == kSettingsMenuIconControlId) {
        ShowSettingsMenu(dialog);
        return true;
    }
    return (notification == STN_CLICKED || notification == STN_DBLCLK) &&
           OnPictureClicked(dialog, controlId, notification == STN_DBLCLK);
}

} // namespace

void EndMainDialog(HWND dialog, int result) {
    gMainDialog.isEnding = true;
    EndDialog(dialog, result);
}

bool OnDialogCommand(HWND dialog, int id, int notification, LPARAM lParam) {
    if (notification == kAcceleratorNotification && lParam == 0 && OnKeyboardCommand(dialog, id))
        return true;
    switch (id) {
    case IDOK:
    case IDCANCEL:
    case kHelpId:
        OnButton(dialog, id, notification);
        return true;
    case kPreviewOnId:
        if (notification == BN_CLICKED)
            OnPreviewBox(dialog);
        return true;
    case kEffectsOnlyId:
        return notification == BN_CLICKED && OnCheckBoxClicked(dialog, id);
    case kEffectComboId:
        OnEffectCombo(dialog, notification);
        return true;
    case kSettingsComboId:
        OnSettingsCombo(dialog, notification);
        return true;
    }
    if (notification == STN_CLICKED && OnParameterPicture(id))
        return true;
    if (notification == EN_CHANGE && OnParameterEditChanged(id))
        return true;
    return OnPicture(dialog, id, notification);
}
