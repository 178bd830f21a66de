#include "diag/LogRotation.h"

#include "diag/ErrorReport.h"
#include "diag/LogState.h"
#include "diag/WidePath.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <windows.h>

namespace {

constexpr char kLogExtension[] = "log";
constexpr wchar_t kWideEnding[] = L".log";
constexpr unsigned kOldestLog = 9;
constexpr size_t kLogNameCapacity = 100, kMostOldLogs = 32;

constexpr uint32_t kSiteFolderCopy = 694, kSiteSearchPath = 704, kSiteDelete = 722, kSiteRename = 755,
                   kSiteLogPath = 768, kSiteFolder = 782;

struct LogFolder {
    const char *path;
    const char *name;
    WidePath widePath;
    wchar_t wideName[kLogNameCapacity];
};

// A log that moves up.
struct OldLog {
    unsigned number;
    wchar_t fileName[kLogNameCapacity];
};

struct OldLogs {
    OldLog logs[kMostOldLogs];
    size_t count;
};

// An empty path stands for a folder that could not be obtained. It counts as a failed copy: used as it is, it
// would mean the root of the current drive.
bool CopyLogFolder(const char *folder, const char *name, LogFolder *logs) {
    logs->path = folder ? folder : "";
    logs->name = name;
    const bool isNamed =
        MultiByteToWideChar(CP_ACP, 0, name, -1, logs->wideName, static_cast<int>(kLogNameCapacity / 2)) > 0;
    if (isNamed && *logs->path && strlen(logs->path) < kLogPathCapacity &&
        WidenPath(logs->path, &logs->widePath))
        return true;
    ReportError({kSiteFolderCopy, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                "_tcscpy_s() failed with Debug Log directory = '%s'", logs->path);
    ReportError({kSiteFolder, kDebugMessage, 0}, kStopIcon, kTitleUnexpected, "GetDebugLogFolder() failed.");
    return false;
}

bool TellTooLong(uint32_t site, const LogFolder &folder) {
    ReportError({site, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                "_stprintf_s() failed with Debug Log directory = '%s' and  errno = '%d'", folder.path,
                ERANGE);
    return false;
}

// What the two wildcards of "name_??.log" stand for, as a number; kOldestLog when the file has to go: too
// old, or no number. One character is enough. False for what is no log. Systems differ in what such wildcards
// find, and some also find names by their short alias, so that this alone decides.
bool ReadLogNumber(const LogFolder &folder, const wchar_t *fileName, unsigned *number) {
    const size_t prefix = wcslen(folder.wideName), length = wcslen(fileName), ending = wcslen(kWideEnding);
    if (length < prefix + 2 + ending || length > prefix + 3 + ending ||
        _wcsnicmp(fileName, folder.wideName, prefix) != 0 || fileName[prefix] != L'_' ||
        _wcsicmp(fileName + length - ending, kWideEnding) != 0)
        return false;
    const wchar_t *digit = fileName + prefix + 1, *end = fileName + length - ending;
    if (end - digit == 2 && *digit == L'0')
        ++digit;
    *number = end - digit == 1 && *digit >= L'0' && *digit <= L'9' ? static_cast<unsigned>(*digit - L'0')
                                                                   : kOldestLog;
    return true;
}

bool DeleteOldLog(const LogFolder &folder, const wchar_t *fileName) {
    WidePath path = {};
    errno = ENAMETOOLONG;
    if (JoinPath(folder.widePath.text, fileName, &path) && _wremove(SystemPath(path.text).text) == 0)
        return true;
    ReportError({kSiteDelete, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                "_tremove() failed with error = '%d'. File to be deleted was '%s'", errno,
                DescribePath(path.text).text);
    return false;
}

// False when the file could not be deleted.
bool TakeFoundLog(const LogFolder &folder, const wchar_t *fileName, OldLogs *old) {
    unsigned number = 0;
    if (!ReadLogNumber(folder, fileName, &number))
        return true;
    if (number >= kOldestLog || old->count == kMostOldLogs)
        return DeleteOldLog(folder, fileName);
    OldLog *log = &old->logs[old->count++];
    log->number = number;
    wcscpy(log->fileName, fileName);
    return true;
}

// Deletes what is too old and notes the others. False when a file could not be deleted.
bool SearchOldLogs(const LogFolder &folder, OldLogs *old) {
    wchar_t name[kLogNameCapacity];
    WidePath pattern;
    swprintf(name, kLogNameCapacity, L"%ls_*", folder.wideName);
    if (!JoinPath(folder.widePath.text, name, L"log", &pattern))
        return TellTooLong(kSiteSearchPath, folder);
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileW(SystemPath(pattern.text).text, &entry);
    if (search == INVALID_HANDLE_VALUE)
        return true;
    bool allDeleted = true;
    do
        allDeleted = TakeFoundLog(folder, entry.cFileName, old) && allDeleted;
    while (FindNextFileW(search, &entry));
    FindClose(search);
    return allDeleted;
}

bool MoveLogUp(const LogFolder &folder, const OldLog &log) {
    wchar_t name[kLogNameCapacity];
    WidePath from, to;
    swprintf(name, kLogNameCapacity, L"%ls_%02u", folder.wideName, log.number + 1);
    if (!JoinPath(folder.widePath.text, log.fileName, &from) ||
        !JoinPath(folder.widePath.text, name, L"log", &to))
        return TellTooLong(kSiteLogPath, folder);
    if (_wrename(SystemPath(from.text).text, SystemPath(to.text).text) == 0)
        return true;
    ReportError({kSiteRename, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                "_trename() failed with error = '%d'. File to be renamed was '%s'", errno,
                DescribePath(from.text).text);
    return false;
}

} // namespace

bool FormatLogPath(const char *folder, const char *name, unsigned number, char *path, size_t capacity) {
    char formatted[kLogPathCapacity];
    const int printed =
        snprintf(formatted, sizeof formatted, "%s\\%s_%.2u.%s", folder, name, number, kLogExtension);
    if (printed < 0 || static_cast<size_t>(printed) >= std::min(sizeof formatted, capacity))
        return false;
    memcpy(path, formatted, static_cast<size_t>(printed) + 1);
    return true;
}

// The oldest moves first, so that its new name is free for the next one.
bool RotateLogs(const char *folder, const char *name, char *newPath, size_t capacity) {
    LogFolder logs = {};
    if (!CopyLogFolder(folder, name, &logs))
        return false;
    OldLogs old = {};
    bool moving = SearchOldLogs(logs, &old);
    std::stable_sort(old.logs, old.logs + old.count,
                     [](const OldLog &a, const OldLog &b) { return a.number > b.number; });
    for (size_t i = 0; moving && i < old.count; ++i)
        moving = MoveLogUp(logs, old.logs[i]);
    return FormatLogPath(folder, name, 0, newPath, capacity) || TellTooLong(kSiteLogPath, logs);
}
