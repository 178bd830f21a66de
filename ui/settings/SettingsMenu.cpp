#include "ui/settings/SettingsMenu.h"

#include "diag/ErrorReport.h"
#include "resources/DialogControlIds.h"
#include "storage/ParameterSetFiles.h"
#include "ui/settings/ParameterFileCommands.h"
#include "ui/settings/ParameterSetList.h"
#include "ui/window/DialogMessages.h"

namespace {

constexpr uint32_t kSiteTrackFailed = 1105, kSiteUnexpectedItem = 1111;

enum SettingsMenuItem : UINT { kLoadSettings = 1, kSaveSettings = 2, kDeleteSettings = 3 };

constexpr int kDefaultsRow = 0, kLastUsedRow = 1; // the dialog's own
// No file can have these names: a file's name holds no angle bracket.
constexpr wchar_t kDefaultsName[] = L"<Default Settings>";
constexpr wchar_t kLastUsedName[] = L"<Last Used Settings>";

int gSettingsRow = -1;    // chosen last; -1: none
bool gLeavesSettingsList; // as soon as the list is closed

void AddOwnRow(HWND dialog, const wchar_t *name, ParameterBlockOperation operation) {
    ParameterBlock *block =
        gParameterBlockAccessor
            ? reinterpret_cast<ParameterBlock *>(gParameterBlockAccessor(operation, nullptr))
            : nullptr;
    AddParameterSet(dialog, name, block);
}

bool IsCurrentSet(const ParameterBlock *block) {
    return block && gParameterBlockAccessor && gParameterBlockAccessor(kCompareBlock, block) == 1;
}

bool IsListOpen(HWND dialog) {
    return SendDlgItemMessageW(dialog, kSettingsComboId, CB_GETDROPPEDSTATE, 0, 0) != 0;
}

// Away from the list, so that the keys reach the preview again.
void LeaveSettingsList(HWND dialog) {
    if (GetFocus() != GetDlgItem(dialog, kSettingsComboId))
        return;
    HWND next = GetDlgItem(dialog, kPreviewDisplayId);
    if (!next)
        next = GetDlgItem(dialog, IDOK);
    SetFocus(next);
}

void SelectSettingsRow(HWND dialog, int row) {
    SelectParameterSet(dialog, row);
    gSettingsRow = row;
}

// The set that was loaded is the one chosen last, also where its row is not shown.
void LoadSettings(HWND dialog) {
    if (const std::optional<int> row = LoadParameterFileDialog(dialog))
        gSettingsRow = *row;
}

// The set chosen last is offered. The set just saved stands in the list; its row shows that nothing has
// changed since.
void SaveSettings(HWND dialog) {
    const int row = SaveParameterFileDialog(dialog, ParameterSetPath(dialog, gSettingsRow));
    if (row >= 0)
        SelectSettingsRow(dialog, row);
}

void ApplySettingsItem(HWND dialog, UINT item) {
    switch (item) {
    case 0:
        return;
    case kLoadSettings:
        LoadSettings(dialog);
        return;
    case kSaveSettings:
        SaveSettings(dialog);
        return;
    case kDeleteSettings:
        DeleteParameterFile(dialog);
        gSettingsRow = SelectedParameterSet(dialog); // none, unless the user thought better of it
        return;
    default:
        ReportError({kSiteUnexpectedItem, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "TrackPopupMenu() returned unexpected value 0x%X", item);
    }
}

POINT BelowSettingsIcon(HWND dialog) {
    RECT icon = {};
    GetWindowRect(GetDlgItem(dialog, kSettingsMenuIconControlId), &icon);
    return {icon.left, icon.bottom};
}

HMENU MakeSettingsMenu(HWND dialog) {
    const HMENU menu = CreatePopupMenu();
    if (!menu)
        return nullptr;
    const UINT deletable = SelectedParameterSet(dialog) < kOwnSettingsRows ? MF_GRAYED : MF_ENABLED;
    AppendMenuW(menu, MF_STRING, kLoadSettings, L"Load Settings");
    AppendMenuW(menu, MF_STRING, kSaveSettings, L"Save Settings");
    AppendMenuW(menu, MF_STRING | deletable, kDeleteSettings, L"Delete Settings");
    return menu;
}

// The user's choice, 0 for none.
UINT TrackSettingsMenu(HWND dialog) {
    const HMENU menu = MakeSettingsMenu(dialog);
    const POINT point = BelowSettingsIcon(dialog);
    SetForegroundWindow(dialog);
    SetLastError(0);
    const UINT item = static_cast<UINT>(
        TrackPopupMenu(menu, TPM_RIGHTBUTTON | TPM_RETURNCMD, point.x, point.y, 0, dialog, nullptr));
    const DWORD error = item == 0 ? GetLastError() : 0;
    // Without a message of its own to handle the menu's owner would not close the menu the next time.
    PostMessageW(dialog, WM_NULL, 0, 0);
    if (menu)
        DestroyMenu(menu);
    if (error != 0)
        ReportError({kSiteTrackFailed, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "TrackPopupMenu() failed with error code 0x%X", static_cast<unsigned>(error));
    return item;
}

} // namespace

void FillSettingsList(HWND dialog) {
    gSettingsRow = -1;
    gLeavesSettingsList = false;
    AddOwnRow(dialog, kDefaultsName, kMakeDefaultBlock);
    AddOwnRow(dialog, kLastUsedName, kMakeCurrentBlock);
    FillParameterSetList(dialog);
}

// The row that the dialog opens with: the defaults or a saved set if it has the present values, else the set
// of last time.
void SelectFittingSettings(HWND dialog) {
    if (IsCurrentSet(ParameterSetAt(dialog, gSettingsRow)))
        return SelectParameterSet(dialog, gSettingsRow);
    const int count = static_cast<int>(SendDlgItemMessageW(dialog, kSettingsComboId, CB_GETCOUNT, 0, 0));
    int fitting = IsCurrentSet(ParameterSetAt(dialog, kLastUsedRow)) ? kLastUsedRow : -1;
    for (int row = count - 1; row >= 0; --row)
        if (row != kLastUsedRow && IsCurrentSet(ParameterSetAt(dialog, row)))
            fitting = row;
    SelectParameterSet(dialog, fitting);
    if (fitting >= 0)
        gSettingsRow = fitting;
}

void ChooseDefaultSettings(HWND dialog) {
    SelectParameterSet(dialog, kDefaultsRow);
    OnSettingsChosen(dialog);
}

void OnSettingsChosen(HWND dialog) {
    const int row = SelectedParameterSet(dialog);
    const ParameterBlock *block = ParameterSetAt(dialog, row);
    gSettingsRow = row;
    if (!block || !ApplyParameterBlock(dialog, *block))
        return;
    gLeavesSettingsList = IsListOpen(dialog);
    if (!gLeavesSettingsList)
        LeaveSettingsList(dialog);
    PostMessageW(dialog, kMsgRequestPreview, 0, 0);
}

void OnSettingsListClosed(HWND dialog) {
    if (gLeavesSettingsList)
        LeaveSettingsList(dialog);
    gLeavesSettingsList = false;
}

void ReselectSettings(HWND dialog) {
    if (IsListOpen(dialog))
        return;
    const int row = gSettingsRow;
    const int wanted = IsCurrentSet(ParameterSetAt(dialog, row)) ? row : -1;
    if (SelectedParameterSet(dialog) != wanted)
        SelectParameterSet(dialog, wanted);
}

void ShowSettingsMenu(HWND dialog) {
    WidePath folder;
    if (GetUserParametersFolder(&folder))
        ApplySettingsItem(dialog, TrackSettingsMenu(dialog));
}
