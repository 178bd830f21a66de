#include "diag/Log.h"

#include "diag/ErrorReport.h"
#include "diag/FormattedText.h"
#include "diag/LogLines.h"
#include "diag/LogRotation.h"
#include "diag/LogState.h"
#include "diag/ProcessLock.h"
#include "diag/WidePath.h"
#include "diag/module/ModuleVersion.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

const char *gLogFolderPath = "";
const char *gProductCommonFolderPath = "";

namespace {

constexpr uint32_t kSiteTracePath = 240, kSiteCreateLog = 260, kSiteNoLogFile = 265;
constexpr char kLongTimeFormat[] = "on %A, %B %d, %Y at %H:%M:%S";
constexpr size_t kLongTimeCapacity = 128;

void FormTraceSetupPath() {
    if (!gProductCommonFolderPath || !*gProductCommonFolderPath)
        return;
    const int printed = snprintf(gLogState.traceSetupPath, sizeof gLogState.traceSetupPath,
                                 "%s\\TraceSetup.trc", gProductCommonFolderPath);
    if (printed >= 0 && static_cast<size_t>(printed) < sizeof gLogState.traceSetupPath)
        return;
    gLogState.traceSetupPath[0] = '\0';
    ReportError({kSiteTracePath, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                "_stprintf_s() failed with Common Data directory = '%s'", gProductCommonFolderPath);
}

// Sharing is wide, so that a log can be read, moved and deleted while its run goes on.
HANDLE OpenLogFile(const char *path, DWORD disposition) {
    WidePath wide;
    if (!WidenPath(path, &wide)) {
        SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return INVALID_HANDLE_VALUE;
    }
    return CreateFileW(SystemPath(wide.text).text, GENERIC_WRITE,
                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, disposition,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

void BeginLogFile(HANDLE file) {
    constexpr uint8_t kByteOrderMark[] = {0xFF, 0xFE};
    DWORD written = 0;
    WriteFile(file, kByteOrderMark, sizeof kByteOrderMark, &written, nullptr);
}

// Null, reported, when the file cannot be created.
HANDLE CreateLogFile(const char *path) {
    const HANDLE file = OpenLogFile(path, CREATE_ALWAYS);
    if (file == INVALID_HANDLE_VALUE) {
        ReportError({kSiteCreateLog, kSystemError, static_cast<uint32_t>(GetLastError())}, kStopIcon,
                    kTitleUnexpected, "Can't open debug log file '%s'", path);
        return nullptr;
    }
    BeginLogFile(file);
    return file;
}

// Whether another process writes to the file: a log that could not be moved out of the way.
bool IsWrittenElsewhere(const char *path) {
    WidePath wide;
    if (!WidenPath(path, &wide))
        return false;
    const HANDLE file = CreateFileW(SystemPath(wide.text).text, GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_SHARING_VIOLATION;
    CloseHandle(file);
    return false;
}

// Null, reported, when there is no file to be had. A process that starts at the same moment waits: it would
// take this one's new file for an old one.
HANDLE MakeLogFile() {
    void *lock = TakeProcessLock("logs", gLogFolderPath ? gLogFolderPath : "");
    HANDLE file = nullptr;
    if (lock && RotateLogs(gLogFolderPath, kLogName, gLogState.path, sizeof gLogState.path) &&
        !IsWrittenElsewhere(gLogState.path))
        file = CreateLogFile(gLogState.path);
    else
        ReportError({kSiteNoLogFile, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "Can't allocate a debug log file for '%s'", kLogName);
    ReleaseProcessLock(lock);
    return file;
}

// Null when the log of this number is another one, or there is none.
HANDLE ReopenLog(unsigned number) {
    char path[kLogPathCapacity];
    if (!FormatLogPath(gLogFolderPath, kLogName, number, path, sizeof path))
        return nullptr;
    const HANDLE file = OpenLogFile(path, OPEN_EXISTING);
    if (file == INVALID_HANDLE_VALUE)
        return nullptr;
    const LogIdentity identity = IdentifyLog(file);
    if (memcmp(&identity, &gLogState.closedLog, sizeof identity) != 0) {
        CloseHandle(file);
        return nullptr;
    }
    SetFilePointer(file, 0, nullptr, FILE_END);
    memcpy(gLogState.path, path, sizeof path);
    return file;
}

// Null when the log is gone and its place taken.
HANDLE FindClosedLog() {
    for (unsigned number = 0; number < kMostLogs; ++number)
        if (const HANDLE file = ReopenLog(number))
            return file;
    char path[kLogPathCapacity];
    if (!FormatLogPath(gLogFolderPath, kLogName, 0, path, sizeof path))
        return nullptr;
    const HANDLE file = OpenLogFile(path, CREATE_NEW);
    if (file == INVALID_HANDLE_VALUE)
        return nullptr;
    BeginLogFile(file);
    memcpy(gLogState.path, path, sizeof path);
    return file;
}

void WriteLogHeader() {
    char now[kLongTimeCapacity];
    FormatLocalTime(now, sizeof now, kLongTimeFormat);
    char versionText[kVersionTextCapacity];
    FormatVersion(ReadModuleVersion(), versionText);
    WriteLogLine("%s version %s (%s%s) Log opened %s.\n\n", kLogName, versionText, "64 bit", " Release", now);
}

void UseLogFile(HANDLE file) {
    SetLogFile(file);
    gLogState.hasLog = true;
    WriteLogHeader();
}

} // namespace

void OpenLog(NativeWindow ownerWindow, uint32_t ownerThreadId) {
    if (gLogState.setUpDone)
        return;
    gLogState.setUpDone = true;
    SetReportOwner(ownerWindow, ownerThreadId);
    FormTraceSetupPath();
    if (const HANDLE file = MakeLogFile())
        UseLogFile(file);
}

void ContinueLog() {
    if (!gLogState.hasLog || IsLogOpen())
        return;
    void *lock = TakeProcessLock("logs", gLogFolderPath);
    const HANDLE file = lock ? FindClosedLog() : nullptr;
    ReleaseProcessLock(lock);
    if (file)
        UseLogFile(file);
}

void CloseLog() {
    char now[kLongTimeCapacity];
    FormatLocalTime(now, sizeof now, kLongTimeFormat);
    WriteLastLogLine("\n%s Log closed %s.\n", kLogName, now);
}
