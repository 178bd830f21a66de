#include "storage/AppFolders.h"

#include "diag/ErrorReport.h"
#include "diag/Log.h"
#include "storage/AtomicFile.h"
#include "storage/InstalledFiles.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <windows.h>

#include <shlobj.h>

char gSettingsFolder[kMaxPath];
char gParametersFolder[kMaxPath];
char gLogFolder[kMaxPath];
char gCommonDataFolder[kMaxPath];
char gProductCommonFolder[kMaxPath];

namespace {

constexpr char kCommonDataName[] = "NexorvantaSoftware";

constexpr uint32_t kSiteShellFolder = 101, kSiteJoin = 112, kSiteCopy = 119, kSiteCreateKnown = 138,
                   kSiteCreateUnknown = 143, kSiteRelativePath = 171, kSiteGetFolder = 178,
                   kSiteMakeFolder = 185, kSiteCommonFolder = 214, kSiteProductFolder = 223;

// One per-user folder: its relative path around the short product name, and its name in reports.
struct UserFolder {
    const char *relativeFormat;
    const char *reportName;
    char (*path)[kMaxPath];
};

constexpr UserFolder kUserFolders[] = {
    {"Nexorvanta\\%s\\Settings", "Settings", &gSettingsFolder},
    {"Nexorvanta\\%s\\Parameters", "Parameters", &gParametersFolder},
    {"Nexorvanta\\%s\\Logs", "DebugLog", &gLogFolder},
};

bool Fits(int printed, size_t capacity) {
    return printed >= 0 && static_cast<size_t>(printed) < capacity;
}

ErrorRecord DebugReport(uint32_t site) {
    return {site, kDebugMessage, 0};
}

// The user's root as the shell's narrow function gives it, and as it is used. Only while the folders are set
// up: the three of them lie below one root, and asking the shell takes long.
struct UserRoot {
    char given[MAX_PATH], used[MAX_PATH];
};
UserRoot gUserRoot;

// The user's name may have characters that the code page lacks: the shell's ANSI answer then has "?" or a
// similar letter for them, which leads nowhere or to another user. Question marks, which no path has, then
// stand for the wide answer.
void CompareWithWideRoot(char (&root)[MAX_PATH]) {
    wchar_t wideRoot[MAX_PATH];
    WidePath widened;
    char narrow[MAX_PATH];
    RememberWideRoot(nullptr, nullptr);
    if (SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, wideRoot) != S_OK ||
        (WidenPath(root, &widened) && wcscmp(widened.text, wideRoot) == 0) ||
        WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, wideRoot, -1, narrow, sizeof narrow, "?",
                            nullptr) <= 0 ||
        !strchr(narrow, '?')) // it says the same, in other words
        return;
    memcpy(root, narrow, sizeof root);
    RememberWideRoot(root, wideRoot);
}

void RepairUserRoot(char (&root)[MAX_PATH]) {
    if (!*gUserRoot.given || strcmp(gUserRoot.given, root) != 0) {
        memcpy(gUserRoot.given, root, sizeof root);
        CompareWithWideRoot(root);
        memcpy(gUserRoot.used, root, sizeof root);
    }
    memcpy(root, gUserRoot.used, sizeof root);
}

bool IsMissing(const char *path) {
    WidePath wide;
    return WidenPath(path, &wide) &&
           GetFileAttributesW(SystemPath(wide.text).text) == INVALID_FILE_ATTRIBUTES;
}

int CreateFolders(const char *path) {
    WidePath wide;
    if (IsBelowWideRoot(path) && WidenPath(path, &wide))
        return SHCreateDirectoryExW(nullptr, wide.text, nullptr);
    return SHCreateDirectoryExA(nullptr, path, nullptr);
}

bool JoinShellFolder(int shellFolder, const char *relativePath, char *path, size_t capacity) {
    char root[MAX_PATH] = {};
    SetLastError(ERROR_SUCCESS);
    const HRESULT result =
        SHGetFolderPathA(nullptr, shellFolder | CSIDL_FLAG_CREATE, nullptr, SHGFP_TYPE_CURRENT, root);
    if (result != S_OK) {
        ReportError(DebugReport(kSiteShellFolder), kStopIcon, kTitleUnexpected,
                    "SHGetFolderPath failed with GetFolderResult = '%X' and  Last Error = '%X'",
                    static_cast<unsigned>(result), static_cast<unsigned>(GetLastError()));
        return false;
    }
    if (shellFolder == CSIDL_LOCAL_APPDATA)
        RepairUserRoot(root);
    // Roomier than any path that is accepted: one that is too long is told from the copy, with its relative
    // path.
    char joined[kMaxPath + MAX_PATH];
    const int printed = snprintf(joined, sizeof joined, "%s\\%s", root, relativePath);
    if (!Fits(printed, sizeof joined)) {
        ReportError(DebugReport(kSiteJoin), kStopIcon, kTitleUnexpected,
                    "_stprintf_s() failed with RootDirPath = '%s' and  errno = '%d'", root, ERANGE);
        return false;
    }
    if (!Fits(printed, capacity)) {
        ReportError(DebugReport(kSiteCopy), kStopIcon, kTitleUnexpected,
                    "_tcscpy_s() failed with UserDirPath = '%s' and  CpyResult = '%d'", relativePath, ERANGE);
        return false;
    }
    strcpy(path, joined);
    return true;
}

bool InitUserFolder(const UserFolder &folder, const char *shortName) {
    char relativePath[kMaxRelativePath];
    const bool formatted = Fits(snprintf(relativePath, sizeof relativePath, folder.relativeFormat, shortName),
                                sizeof relativePath);
    if (!formatted)
        ReportError(DebugReport(kSiteRelativePath), kStopIcon, kTitleUnexpected,
                    "_stprintf_s() failed with %s Subdirectory of '%s' and  errno = '%d'", folder.reportName,
                    shortName, ERANGE);
    if (!formatted || !GetUserDataFolder(relativePath, *folder.path, kMaxPath)) {
        ReportError(DebugReport(kSiteGetFolder), kStopIcon, kTitleUnexpected, "GetUserDataFolder() failed.");
        return false;
    }
    // A user who has a folder for sets, though it be empty, has chosen what is in it.
    const bool getsSets = folder.path == &gParametersFolder && IsMissing(*folder.path);
    if (MakeUserDataFolder(*folder.path)) {
        if (getsSets)
            CopyInstalledSets(*folder.path);
        return true;
    }
    ReportError(DebugReport(kSiteMakeFolder), kStopIcon, kTitleUnexpected,
                "MakeUserDataFolder() failed with %s Subdirectory = '%s'", folder.reportName, relativePath);
    return false;
}

bool InitProductCommonFolder(const char *fullName) {
    char path[kMaxPath];
    if (!Fits(snprintf(path, sizeof path, "%s\\%s", gCommonDataFolder, fullName), sizeof path)) {
        ReportError(DebugReport(kSiteProductFolder), kStopIcon, kTitleUnexpected,
                    "_stprintf_s() failed with RootDirPath = '%s' and  errno = '%d'", gCommonDataFolder,
                    ERANGE);
        return false;
    }
    memcpy(gProductCommonFolder, path, sizeof path);
    return true;
}

bool InitCommonFolders(const char *fullName) {
    if (GetCommonDataFolder(kCommonDataName, gCommonDataFolder, sizeof gCommonDataFolder))
        return InitProductCommonFolder(fullName);
    ReportError(DebugReport(kSiteCommonFolder), kStopIcon, kTitleUnexpected,
                "GetCommonDataFolder() failed to initialize the common data directory.");
    return false;
}

} // namespace

bool GetUserDataFolder(const char *relativePath, char *path, size_t capacity) {
    return JoinShellFolder(CSIDL_LOCAL_APPDATA, relativePath, path, capacity);
}

bool MakeUserDataFolder(const char *path) {
    SetLastError(ERROR_SUCCESS);
    const int result = CreateFolders(path);
    const unsigned lastError = GetLastError();
    switch (result) {
    case ERROR_SUCCESS:
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        return true;
    case ERROR_PATH_NOT_FOUND:
    case ERROR_BAD_PATHNAME:
    case ERROR_FILENAME_EXCED_RANGE:
    case ERROR_CANCELLED:
        ReportError(DebugReport(kSiteCreateKnown), kStopIcon, kTitleUnexpected,
                    "SHCreateDirectoryEx failed.  Result = '%X' and Last Error = '%X'",
                    static_cast<unsigned>(result), lastError);
        return false;
    default:
        ReportError(DebugReport(kSiteCreateUnknown), kStopIcon, kTitleUnexpected,
                    "SHCreateDirectoryEx failed with unexpected Result = '%X' and Last Error = '%X'",
                    static_cast<unsigned>(result), lastError);
        return false;
    }
}

bool GetCommonDataFolder(const char *name, char *path, size_t capacity) {
    return JoinShellFolder(CSIDL_COMMON_APPDATA, name, path, capacity);
}

bool InitAppFolders(const char *shortName, const char *fullName) {
    bool allSet = true;
    gUserRoot = {};
    for (const UserFolder &folder : kUserFolders)
        allSet = InitUserFolder(folder, shortName) && allSet;
    allSet = InitCommonFolders(fullName) && allSet;
    RemoveOldTemporaryFiles(gSettingsFolder);
    RemoveOldTemporaryFiles(gParametersFolder);
    gLogFolderPath = gLogFolder;
    gProductCommonFolderPath = gProductCommonFolder;
    gUserRoot = {};
    return allSet;
}
