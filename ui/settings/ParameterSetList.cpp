#include "ui/settings/ParameterSetList.h"

#include "diag/ErrorReport.h"
#include "storage/ParameterSetFiles.h"
#include "ui/window/DialogMessages.h"

#include <cstdlib>
#include <cstring>

namespace {

constexpr uint32_t kSiteAdd = 37, kSiteSetData = 44;
constexpr LPARAM kExpectedSets = 500, kExpectedNameBytes = 64; // room made in the list before it is filled

LRESULT SendToList(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return SendMessageW(GetDlgItem(dialog, kSettingsComboId), message, wParam, lParam);
}

ParameterBlock *BlockAt(HWND dialog, int index) {
    if (index < 0 || index >= static_cast<int>(SendToList(dialog, CB_GETCOUNT, 0, 0)))
        return nullptr;
    const LRESULT data = SendToList(dialog, CB_GETITEMDATA, static_cast<WPARAM>(index), 0);
    return data == CB_ERR ? nullptr : reinterpret_cast<ParameterBlock *>(data);
}

void SetBlock(HWND dialog, int index, ParameterBlock *block) {
    SendToList(dialog, CB_SETITEMDATA, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(block));
}

void AddFoundSet(void *context, const wchar_t *name, ParameterBlock *block) {
    AddParameterSet(static_cast<HWND>(context), name, block);
}

} // namespace

void FillParameterSetList(HWND dialog) {
    SendToList(dialog, WM_SETREDRAW, FALSE, 0);
    SendToList(dialog, CB_INITSTORAGE, kExpectedSets, kExpectedSets * kExpectedNameBytes);
    ReadAllParameterSets(dialog, AddFoundSet, dialog);
    SendToList(dialog, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(GetDlgItem(dialog, kSettingsComboId), nullptr, TRUE);
}

void FreeParameterSetList(HWND dialog) {
    for (int i = static_cast<int>(SendToList(dialog, CB_GETCOUNT, 0, 0)) - 1; i >= 0; --i)
        free(BlockAt(dialog, i));
    SendToList(dialog, CB_RESETCONTENT, 0, 0);
}

int AddParameterSet(HWND dialog, const wchar_t *name, ParameterBlock *block) {
    const LRESULT index = SendToList(dialog, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(name));
    if (index < 0) { // CB_ERR or CB_ERRSPACE
        free(block);
        ReportError({kSiteAdd, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "The list of parameter sets took no entry for '%s'", DescribePath(name).text);
        return -1;
    }
    SetBlock(dialog, static_cast<int>(index), block);
    return static_cast<int>(index);
}

int ReplaceParameterSet(HWND dialog, const wchar_t *name, ParameterBlock *block) {
    const LRESULT found =
        SendToList(dialog, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(name));
    if (found < 0)
        return AddParameterSet(dialog, name, block);
    const int index = static_cast<int>(found);
    free(BlockAt(dialog, index));
    SetBlock(dialog, index, block);
    return index;
}

void RemoveParameterSet(HWND dialog, int index) {
    free(BlockAt(dialog, index));
    SendToList(dialog, CB_DELETESTRING, static_cast<WPARAM>(index), 0);
}

const ParameterBlock *ParameterSetAt(HWND dialog, int index) {
    return BlockAt(dialog, index);
}

int SelectedParameterSet(HWND dialog) {
    return static_cast<int>(SendToList(dialog, CB_GETCURSEL, 0, 0));
}

void SelectParameterSet(HWND dialog, int index) {
    SendToList(dialog, CB_SETCURSEL, static_cast<WPARAM>(index), 0);
}

bool ParameterSetName(HWND dialog, int index, wchar_t *name, size_t capacity) {
    const LRESULT length =
        index < 0 ? CB_ERR : SendToList(dialog, CB_GETLBTEXTLEN, static_cast<WPARAM>(index), 0);
    if (length < 0 || static_cast<size_t>(length) >= capacity)
        return false;
    return SendToList(dialog, CB_GETLBTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(name)) >= 0;
}
