#include "diag/LogRotation.h"

#include "diag/ErrorReport.h"
#include "diag/LogState.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <windows.h>

namespace {

constexpr char kLogExtension[] = "log";
constexpr unsigned kOldestLog = 9;

constexpr uint32_t kSiteFolderCopy = 694, kSiteSearchPath = 704, kSiteDelete = 722, kSiteRename = 755,
                   kSiteLogPath = 768, kSiteFolder = 782;

struct LogFolder {
    char path[kLogPathCapacity];
    const char *name;
};

bool Fits(int printed, size_t capacity) {
    return printed >= 0 && static_cast<size_t>(printed) < capacity;
}

// An empty path stands for a folder that could not be obtained. It counts as a failed copy: used as it is, it
// would mean the root of the current drive.
bool CopyLogFolder(const char *folder, char (&path)[kLogPathCapacity]) {
    const char *source = folder ? folder : "";
    const size_t length = strlen(source);
    if (length == 0 || length >= sizeof path) {
        ReportError({kSiteFolderCopy, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "_tcscpy_s() failed with Debug Log directory = '%s'", source);
        ReportError({kSiteFolder, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "GetDebugLogFolder() failed.");
        return false;
    }
    memcpy(path, source, length + 1);
    return true;
}

bool FormatLogPath(const LogFolder &folder, unsigned number, char *path, size_t capacity) {
    char formatted[kLogPathCapacity];
    const int printed = snprintf(formatted, sizeof formatted, "%s\\%s_%.2u.%s", folder.path, folder.name,
                                 number, kLogExtension);
    if (!Fits(printed, sizeof formatted) || !Fits(printed, capacity)) {
        ReportError({kSiteLogPath, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "_stprintf_s() failed with Debug Log directory = '%s' and  errno = '%d'", folder.path,
                    ERANGE);
        return false;
    }
    memcpy(path, formatted, static_cast<size_t>(printed) + 1);
    return true;
}

// True when the two wildcards of the search stand for exactly two characters. The system also finds files
// that have fewer, and files whose short alias matches; those are not logs.
bool IsLogName(const char *fileName, const char *logName) {
    const size_t prefix = strlen(logName);
    return strlen(fileName) == prefix + strlen("_00.") + strlen(kLogExtension) &&
           _strnicmp(fileName, logName, prefix) == 0 && fileName[prefix] == '_' &&
           fileName[prefix + 3] == '.' && _stricmp(fileName + prefix + 4, kLogExtension) == 0;
}

// The number of a log, or kOldestLog when the file has to go: too old, or its two characters are not digits.
unsigned LogNumber(const char *fileName, const char *logName) {
    const char *digits = fileName + strlen(logName) + 1;
    if (digits[0] != '0' || digits[1] < '0' || digits[1] > '9')
        return kOldestLog;
    return static_cast<unsigned>(digits[1] - '0');
}

bool DeleteOldLog(const LogFolder &folder, const char *fileName) {
    char path[kLogPathCapacity + MAX_PATH];
    snprintf(path, sizeof path, "%s\\%s", folder.path, fileName);
    if (remove(path) == 0)
        return true;
    ReportError({kSiteDelete, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                "_tremove() failed with error = '%d'. File to be deleted was '%s'", errno, path);
    return false;
}

// Deletes what is too old and notes which of the numbers 0 to 8 exist. False when a file could not be
// deleted.
bool SearchOldLogs(const LogFolder &folder, bool (&found)[kOldestLog]) {
    char pattern[kLogPathCapacity];
    const int printed =
        snprintf(pattern, sizeof pattern, "%s\\%s_??.%s", folder.path, folder.name, kLogExtension);
    if (!Fits(printed, sizeof pattern)) {
        ReportError({kSiteSearchPath, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "_stprintf_s() failed with Debug Log directory = '%s' and  errno = '%d'", folder.path,
                    ERANGE);
        return false;
    }
    WIN32_FIND_DATAA entry;
    const HANDLE search = FindFirstFileA(pattern, &entry);
    if (search == INVALID_HANDLE_VALUE)
        return true;
    bool allDeleted = true;
    do {
        if (!IsLogName(entry.cFileName, folder.name))
            continue;
        const unsigned number = LogNumber(entry.cFileName, folder.name);
        if (number < kOldestLog)
            found[number] = true;
        else
            allDeleted = DeleteOldLog(folder, entry.cFileName) && allDeleted;
    } while (FindNextFileA(search, &entry));
    FindClose(search);
    return allDeleted;
}

bool MoveLogUp(const LogFolder &folder, unsigned number) {
    char from[kLogPathCapacity], to[kLogPathCapacity];
    if (!FormatLogPath(folder, number, from, sizeof from) ||
        !FormatLogPath(folder, number + 1, to, sizeof to))
        return false;
    if (rename(from, to) == 0)
        return true;
    ReportError({kSiteRename, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                "_trename() failed with error = '%d'. File to be renamed was '%s'", errno, from);
    return false;
}

} // namespace

// The oldest moves first, so that its new name is free for the next one.
bool RotateLogs(const char *folder, const char *name, char *newPath, size_t capacity) {
    LogFolder logs = {{}, name};
    if (!CopyLogFolder(folder, logs.path))
        return false;
    bool found[kOldestLog] = {};
    bool moving = SearchOldLogs(logs, found);
    for (unsigned left = kOldestLog; moving && left > 0; --left)
        moving = !found[left - 1] || MoveLogUp(logs, left - 1);
    return FormatLogPath(logs, 0, newPath, capacity);
}
