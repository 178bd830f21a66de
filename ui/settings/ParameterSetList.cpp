#include "ui/settings/ParameterSetList.h"

#include "diag/ErrorReport.h"
#include "resources/DialogControlIds.h"
#include "storage/ParameterSetFiles.h"

#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace {

constexpr uint32_t kSiteAdd = 37;
constexpr LPARAM kExpectedSets = 500, kExpectedNameBytes = 64; // room made in the list before it is filled

// What an entry's data points to; its block comes first.
struct ListedSet {
    ParameterBlock block;
    WidePath path;
};

LRESULT SendToList(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return SendMessageW(GetDlgItem(dialog, kSettingsComboId), message, wParam, lParam);
}

ParameterBlock *BlockAt(HWND dialog, int index) {
    if (index < 0 || index >= static_cast<int>(SendToList(dialog, CB_GETCOUNT, 0, 0)))
        return nullptr;
    const LRESULT data = SendToList(dialog, CB_GETITEMDATA, static_cast<WPARAM>(index), 0);
    return data == CB_ERR ? nullptr : reinterpret_cast<ParameterBlock *>(data);
}

void SetData(HWND dialog, int index, ListedSet *set) {
    SendToList(dialog, CB_SETITEMDATA, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(set));
}

// -1, reported, with the block freed, when the list takes none.
int AddEntry(HWND dialog, const wchar_t *name, const WidePath &path, ParameterBlock *block) {
    ListedSet *set = block ? static_cast<ListedSet *>(realloc(block, sizeof(ListedSet))) : nullptr;
    const LRESULT index =
        block && !set ? CB_ERRSPACE : SendToList(dialog, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(name));
    if (index < 0) { // CB_ERR or CB_ERRSPACE
        free(set ? &set->block : block);
        ReportError({kSiteAdd, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "The list of parameter sets took no entry for '%s'", DescribePath(name).text);
        return -1;
    }
    if (set)
        set->path = path;
    SetData(dialog, static_cast<int>(index), set);
    return static_cast<int>(index);
}

int AddFile(HWND dialog, const wchar_t *path, ParameterBlock *block) {
    WidePath name, kept = {};
    NameOfParameterSet(path, &name);
    wcsncpy(kept.text, path, kMaxPath - 1);
    return AddEntry(dialog, name.text, kept, block);
}

void AddFoundSet(void *context, const wchar_t *path, ParameterBlock *block) {
    AddFile(static_cast<HWND>(context), path, block);
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
    return AddEntry(dialog, name, {}, block);
}

int FindParameterSetFile(HWND dialog, const wchar_t *path) {
    for (int i = static_cast<int>(SendToList(dialog, CB_GETCOUNT, 0, 0)) - 1; i >= 0; --i)
        if (const WidePath other = ParameterSetPath(dialog, i); *other.text && IsSamePath(other.text, path))
            return i;
    return -1;
}

int ListParameterSetFile(HWND dialog, const wchar_t *path, ParameterBlock *block) {
    const int index = FindParameterSetFile(dialog, path);
    if (index < 0)
        return AddFile(dialog, path, block);
    *BlockAt(dialog, index) = *block;
    free(block);
    return index;
}

void RemoveParameterSet(HWND dialog, int index) {
    free(BlockAt(dialog, index));
    SendToList(dialog, CB_DELETESTRING, static_cast<WPARAM>(index), 0);
}

const ParameterBlock *ParameterSetAt(HWND dialog, int index) {
    return BlockAt(dialog, index);
}

WidePath ParameterSetPath(HWND dialog, int index) {
    const ParameterBlock *block = BlockAt(dialog, index);
    return block ? reinterpret_cast<const ListedSet *>(block)->path : WidePath{};
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
