#include "storage/ParameterSetFiles.h"

#include "diag/ErrorReport.h"
#include "storage/AppFolders.h"
#include "storage/FoundFiles.h"
#include "storage/ParameterFiles.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <windows.h>

namespace {

constexpr wchar_t kWideExtension[] = L"sss";

constexpr uint32_t kSiteCopyFolder = 301, kSiteGetFolder = 309, kSiteAllocate = 327, kSiteFolderFound = 346,
                   kSiteName = 351, kSiteSearch = 372, kSiteRemove = 398;

constexpr ParameterFileTexts kSavedSetTexts = {
    "Warning - Failed to Read Saved Parameter Set",
    "Your Parameter Set file '%s' was saved in an older format and has been converted.\r\n\r\n"
    "The converted Parameter Set is being saved, replacing the original file.",
    "Your Parameter Set file '%s' was saved in an obsolete format and is being deleted.",
    "Your Parameter Set file '%s' could not be read and stays as it is.",
    "Your Parameter Set file '%s' does not exist.",
};

void ReportDebug(uint32_t site, const char *call, const wchar_t *path) {
    ReportError({site, kDebugMessage, 0}, kStopIcon, kTitleUnexpected, "%s failed with FilePath = '%s'", call,
                DescribePath(path).text);
}

// What one search takes along.
struct SetSearch {
    NativeWindow ownerWindow;
    const wchar_t *folder;
    ParameterSetTaker take;
    void *context;
};

// A pattern of three characters also finds longer extensions, by the short names that the system keeps of
// them; such files are none of ours.
void ReadFoundSet(const SetSearch &search, const WIN32_FIND_DATAW &found) {
    if (!HasParameterSetExtension(found.cFileName))
        return;
    if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
        ReportDebug(kSiteFolderFound, "ReadSavedParameterSet()", found.cFileName);
        return;
    }
    WidePath path;
    if (!JoinPath(search.folder, found.cFileName, &path)) {
        ReportDebug(kSiteName, "_stprintf_s()", found.cFileName);
        return;
    }
    ParameterBlock *block = ReadSavedParameterSet(search.ownerWindow, path.text);
    if (block)
        search.take(search.context, path.text, block);
}

bool SearchFailed(const wchar_t *pattern, DWORD error) {
    const ErrorRecord record = {kSiteSearch, kSystemError, static_cast<uint32_t>(error)};
    ReportError(record, kStopIcon, kTitleUnexpected, "FindFirstFile() failed with FilePath = '%s'",
                DescribePath(pattern).text);
    return false;
}

} // namespace

bool GetUserParametersFolder(WidePath *folder) {
    if (*gParametersFolder && WidenPath(gParametersFolder, folder))
        return true;
    ReportError({kSiteCopyFolder, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                "_tcscpy_s() failed with Parameters Directory = '%s'", gParametersFolder);
    ReportError({kSiteGetFolder, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                "GetUserParametersFolder() failed.");
    return false;
}

ParameterBlock *ReadSavedParameterSet(NativeWindow ownerWindow, const wchar_t *path) {
    ParameterBlock *block = static_cast<ParameterBlock *>(malloc(sizeof(ParameterBlock)));
    if (!block) {
        ReportDebug(kSiteAllocate, "malloc()", path);
        return nullptr;
    }
    const NativeWindow previousOwner = SetReportOwnerWindow(ownerWindow);
    const bool read = ReadParameterFile(path, kSavedSetTexts, block);
    SetReportOwnerWindow(previousOwner);
    if (read)
        return block;
    free(block);
    return nullptr;
}

bool ReadAllParameterSets(NativeWindow ownerWindow, ParameterSetTaker take, void *context) {
    WidePath folder, pattern;
    if (!GetUserParametersFolder(&folder))
        return false;
    if (!JoinPath(folder.text, L"*", kWideExtension, &pattern))
        return SearchFailed(folder.text, ERROR_FILENAME_EXCED_RANGE);
    const SetSearch search = {ownerWindow, folder.text, take, context};
    return TakeFoundFiles(pattern.text,
                          [&](const WIN32_FIND_DATAW &found) { ReadFoundSet(search, found); }) ||
           GetLastError() == ERROR_FILE_NOT_FOUND || SearchFailed(pattern.text, GetLastError());
}

bool DeleteSavedParameterSet(const wchar_t *path) {
    if (_wremove(SystemPath(path).text) == 0)
        return true;
    const int error = errno;
    ReportError({kSiteRemove, kUserMessage, 0}, kWarningIcon, kTitleWarning,
                "_tremove() failed with error = '%d'. File to be deleted was '%s'", error,
                DescribePath(path).text);
    return false;
}

void NameOfParameterSet(const wchar_t *path, WidePath *name) {
    const wchar_t *fileName = FileNameOf(path);
    const wchar_t *point = wcsrchr(fileName, L'.');
    const size_t length = point ? static_cast<size_t>(point - fileName) : wcslen(fileName);
    const size_t kept = length < kMaxPath ? length : kMaxPath - 1;
    wmemcpy(name->text, fileName, kept);
    name->text[kept] = L'\0';
}
