#include "ui/settings/ParameterFileCommands.h"

#include "diag/ErrorReport.h"
#include "diag/module/ProductName.h"
#include "resources/DialogControlIds.h"
#include "storage/ParameterFiles.h"
#include "storage/ParameterSetFiles.h"
#include "ui/settings/ParameterSetList.h"
#include "ui/window/DialogMessages.h"

#include <commdlg.h>
#include <cstdlib>
#include <cwchar>
#include <iterator>

namespace {

constexpr wchar_t kExtension[] = L"sss";
constexpr wchar_t kFilter[] =
    L"Parameter Files\0*.sss\0"; // and the array's own end: a list ends with two zeros

constexpr uint32_t kSiteOpenDialog = 412, kSiteLoad = 425, kSiteSaveDialog = 458, kSiteSave = 471,
                   kSiteMakeBlock = 476, kSiteTooLong = 487, kSiteName = 503;

struct FileDialogKind {
    bool saves;
    const wchar_t *verb; // first word of the title
    DWORD flags;
    const char *callName; // in reports
    uint32_t site;
};

constexpr FileDialogKind kOpenDialog = {false, L"Load", OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST,
                                        "GetOpenFileName", kSiteOpenDialog};
constexpr FileDialogKind kSaveDialog = {true, L"Save",
                                        OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST | OFN_NOREADONLYRETURN,
                                        "GetSaveFileName", kSiteSaveDialog};

// *path is what is offered, then what was picked. False when the user cancelled or the dialog failed, which
// is reported. The host's current folder stays.
bool PickParameterFile(HWND dialog, const FileDialogKind &kind, const WidePath &folder, WidePath *path) {
    wchar_t title[100];
    swprintf(title, std::size(title), L"%ls %hs Parameter File", kind.verb, kProductName);
    WidePath picked = wcslen(path->text) < MAX_PATH ? *path : WidePath{}; // longer ones make the dialog fail
    OPENFILENAMEW request = {};
    request.lStructSize = sizeof request;
    request.hwndOwner = dialog;
    request.lpstrFilter = kFilter;
    request.nFilterIndex = 1;
    request.lpstrFile = picked.text;
    request.nMaxFile = kMaxPath;
    request.lpstrInitialDir = folder.text;
    request.lpstrTitle = title;
    request.lpstrDefExt = kExtension;
    request.Flags = OFN_EXPLORER | OFN_HIDEREADONLY | OFN_NOCHANGEDIR | kind.flags;
    if (kind.saves ? GetSaveFileNameW(&request) : GetOpenFileNameW(&request)) {
        *path = picked;
        return true;
    }
    if (const DWORD error = CommDlgExtendedError())
        ReportError({kind.site, kUserMessage, 0}, kWarningIcon, kTitleWarning,
                    "%s() failed with error = '%d'", kind.callName, static_cast<int>(error));
    return false;
}

void SelectAsUser(HWND dialog, int index) {
    SelectParameterSet(dialog, index);
    SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(kSettingsComboId, CBN_SELCHANGE),
                 reinterpret_cast<LPARAM>(GetDlgItem(dialog, kSettingsComboId)));
}

// The row of what was loaded.
std::optional<int> TakeLoadedBlock(HWND dialog, const WidePath &folder, const WidePath &path,
                                   ParameterBlock *block) {
    if (IsInFolder(path.text, folder.text)) {
        const bool isApplied = ApplyParameterBlock(dialog, *block);
        if (isApplied)
            PostMessageW(dialog, kMsgRequestPreview, 0, 0);
        SelectParameterSet(dialog, -1);
        free(block);
        return isApplied ? std::optional(FindParameterSetFile(dialog, path.text)) : std::nullopt;
    }
    const int index = ListParameterSetFile(dialog, path.text, block);
    if (index < 0)
        return std::nullopt;
    SelectAsUser(dialog, index);
    return index;
}

int SaveCurrentSet(HWND dialog, const WidePath &path) {
    ParameterBlock *block =
        gParameterBlockAccessor
            ? reinterpret_cast<ParameterBlock *>(gParameterBlockAccessor(kMakeCurrentBlock, nullptr))
            : nullptr;
    if (!block) {
        ReportError({kSiteMakeBlock, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "The current parameter set could not be made into a block.");
        return -1;
    }
    if (SaveParametersFile(*block, path.text))
        return ListParameterSetFile(dialog, path.text, block);
    free(block);
    ReportError({kSiteSave, kUserMessage, 0}, kWarningIcon, kTitleWarning,
                "SaveParametersFile() failed with FilePath = '%s'", DescribePath(path.text).text);
    return -1;
}

// A name with a point, such as "Night f2.8", has an ending for the file dialog, which then adds none: the set
// would never be found again. The dialog has not asked about the file that is written then. False when
// nothing is to be written.
bool GiveExtension(HWND dialog, WidePath *path) {
    if (HasParameterSetExtension(path->text))
        return true;
    WidePath given = *path;
    if (wcslen(path->text) + std::size(kExtension) >= kMaxPath) {
        ReportError({kSiteTooLong, kUserMessage, 0}, kWarningIcon, kTitleWarning,
                    "SaveParametersFile() failed with FilePath = '%s'", DescribePath(path->text).text);
        return false;
    }
    wcscat(wcscat(given.text, L"."), kExtension);
    *path = given;
    if (GetFileAttributesW(SystemPath(path->text).text) == INVALID_FILE_ATTRIBUTES)
        return true;
    wchar_t title[100], text[kMaxPath + 100];
    swprintf(title, std::size(title), L"Save %hs Parameter File", kProductName);
    swprintf(text, std::size(text), L"The file '%ls' already exists and will be replaced.",
             FileNameOf(path->text));
    return MessageBoxW(dialog, text, title, MB_OKCANCEL | MB_ICONWARNING) == IDOK;
}

bool ConfirmDeletion(HWND dialog, const wchar_t *name) {
    wchar_t title[100], text[kMaxPath + 100];
    swprintf(title, std::size(title), L"Delete %hs Parameter File", kProductName);
    swprintf(text, std::size(text), L"The %hs saved parameter file '%ls.%ls' will be deleted.", kProductName,
             name, kExtension);
    return MessageBoxW(dialog, text, title, MB_OKCANCEL | MB_ICONWARNING) == IDOK;
}

} // namespace

bool ApplyParameterBlock(HWND dialog, const ParameterBlock &block) {
    if (!gParameterBlockAccessor || gParameterBlockAccessor(kCommitBlock, &block) != 1)
        return false;
    SendMessageW(dialog, kMsgParametersReplaced, 0, 0);
    return true;
}

std::optional<int> LoadParameterFileDialog(HWND dialog) {
    WidePath folder, path = {};
    if (!GetUserParametersFolder(&folder) || !PickParameterFile(dialog, kOpenDialog, folder, &path))
        return std::nullopt;
    if (ParameterBlock *block = ReadSavedParameterSet(dialog, path.text))
        return TakeLoadedBlock(dialog, folder, path, block);
    ReportError({kSiteLoad, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                "LoadParameterStructure() failed with FilePath = '%s'", DescribePath(path.text).text);
    return std::nullopt;
}

int SaveParameterFileDialog(HWND dialog, const WidePath &offered) {
    WidePath folder, path = offered;
    if (!GetUserParametersFolder(&folder) || !PickParameterFile(dialog, kSaveDialog, folder, &path) ||
        !GiveExtension(dialog, &path))
        return -1;
    return SaveCurrentSet(dialog, path);
}

void DeleteParameterFile(HWND dialog) {
    const int index = SelectedParameterSet(dialog);
    wchar_t name[kMaxPath];
    if (index < 0)
        return;
    if (!ParameterSetName(dialog, index, name, std::size(name))) {
        ReportError({kSiteName, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "The selected parameter set has no name.");
        return;
    }
    const WidePath path = ParameterSetPath(dialog, index);
    if (!*path.text || !ConfirmDeletion(dialog, name))
        return;
    RemoveParameterSet(dialog, index);
    DeleteSavedParameterSet(path.text);
}
