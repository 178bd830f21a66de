#include "ui/dialog/DialogKeys.h"

#include "resources/DialogControlIds.h"
#include "ui/about/Guide.h"
#include "ui/fields/ParameterControls.h"
#include "ui/history/DialogHistory.h"
#include "ui/settings/SettingsMenu.h"
#include "ui/view/ViewMenu.h"
#include "ui/view/ViewTools.h"
#include "ui/view/ZoomField.h"

#include <iterator>

namespace {

struct ParameterKey {
    int command;
    Parameter parameter;
};

constexpr ParameterKey kParameterKeys[] = {
    {BX_CMD_THRESHOLD, kThreshold},
    {BX_CMD_INTENSITY, kIntensity},
    {BX_CMD_LENGTH, kLength},
    {BX_CMD_ANGLE, kAngle},
    {BX_CMD_NUMBER_OF_POINTS, kNumberOfPoints},
    {BX_CMD_SPIKE_SHARPNESS, kSpikeSharpness},
    {BX_CMD_COLOR_SATURATION, kColorSaturation},
    {BX_CMD_RAINBOW_INTENSITY, kRainbowIntensity},
    {BX_CMD_RAINBOW_FREQUENCY, kRainbowFrequency},
    {BX_CMD_SECONDARY_INTENSITY, kSecondaryIntensity},
    {BX_CMD_SOFT_FLARE, kSoftFlareIntensity},
};
static_assert(std::size(kParameterKeys) == kParameterCount, "a parameter has no key");

void OpenComboBox(HWND dialog, int controlId) {
    const HWND combo = GetDlgItem(dialog, controlId);
    if (!combo)
        return;
    SetFocus(combo);
    SendMessageW(combo, CB_SHOWDROPDOWN, TRUE, 0);
}

// As a click, but the focus stays where the user works.
void ToggleBox(HWND dialog, int controlId) {
    const bool isChecked = IsDlgButtonChecked(dialog, controlId) == BST_CHECKED;
    CheckDlgButton(dialog, controlId, isChecked ? BST_UNCHECKED : BST_CHECKED);
    SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(controlId, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(dialog, controlId)));
}

bool OnViewKey(HWND dialog, int command) {
    switch (command) {
    case BX_CMD_PAN:
        SelectViewTool(kToolPan);
        return true;
    case BX_CMD_ZOOM:
        SelectViewTool(kToolZoom);
        return true;
    case BX_CMD_HIDE:
        SelectEffectTool(kToolHide);
        return true;
    case BX_CMD_SHOW:
        SelectEffectTool(kToolShow);
        return true;
    case BX_CMD_DISPLAY:
        SetFocus(GetDlgItem(dialog, kPreviewDisplayId));
        return true;
    case BX_CMD_ZOOM_MENU:
        ShowZoomMenuAtArrow(dialog);
        return true;
    case BX_CMD_ZOOM_IN:
        ZoomIn();
        return true;
    case BX_CMD_ZOOM_OUT:
        ZoomOut();
        return true;
    case BX_CMD_FIT_IN_VIEW:
        FitInView();
        return true;
    case BX_CMD_FIT_ON_SCREEN:
        FitOnScreen();
        return true;
    }
    return false;
}

bool OnPanelKey(HWND dialog, int command) {
    switch (command) {
    case BX_CMD_SETTINGS:
        OpenComboBox(dialog, kSettingsComboId);
        return true;
    case BX_CMD_EFFECT:
        OpenComboBox(dialog, kEffectComboId);
        return true;
    case BX_CMD_EFFECTS_ONLY:
        ToggleBox(dialog, kEffectsOnlyId);
        return true;
    case BX_CMD_PREVIEW:
        ToggleBox(dialog, kPreviewOnId);
        return true;
    case BX_CMD_SETTINGS_MENU:
        ShowSettingsMenu(dialog);
        return true;
    case BX_CMD_HELP:
        OpenGuide(dialog);
        return true;
    }
    return false;
}

bool OnEditKey(HWND dialog, int command) {
    switch (command) {
    case BX_CMD_UNDO:
    case BX_CMD_REDO:
        if (command == BX_CMD_UNDO ? UndoDialogStep() : RedoDialogStep())
            SelectFittingSettings(dialog);
        return true;
    case BX_CMD_DEFAULTS:
        ChooseDefaultSettings(dialog);
        return true;
    case BX_CMD_TYPE_ZOOM:
        OpenZoomField(dialog);
        return true;
    }
    return false;
}

} // namespace

bool OnKeyboardCommand(HWND dialog, int command) {
    for (const ParameterKey &key : kParameterKeys)
        if (key.command == command) {
            FocusParameterControl(key.parameter);
            return true;
        }
    return OnViewKey(dialog, command) || OnPanelKey(dialog, command) || OnEditKey(dialog, command);
}
