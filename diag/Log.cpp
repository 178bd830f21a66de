#include "diag/Log.h"

#include "diag/ErrorReport.h"
#include "diag/FormattedText.h"
#include "diag/LogRotation.h"
#include "diag/LogState.h"
#include "diag/ModuleVersion.h"
#include "diag/ProcessLock.h"
#include "diag/WidePath.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

const char *gLogFolderPath = "";
const char *gProductCommonFolderPath = "";

LogState gLogState;

namespace {

constexpr uint32_t kSiteTracePath = 240, kSiteCreateLog = 260, kSiteNoLogFile = 265;
constexpr char kLongTimeFormat[] = "on %A, %B %d, %Y at %H:%M:%S";
constexpr size_t kLongTimeCapacity = 128;

// Held while a line is written and while the file changes, so that lines stay whole and none follows the
// last.
SRWLOCK gLogLock = SRWLOCK_INIT;

bool IsLogOpen() {
    AcquireSRWLockShared(&gLogLock);
    const bool open = gLogState.file != nullptr;
    ReleaseSRWLockShared(&gLogLock);
    return open;
}

LogIdentity IdentifyLog(HANDLE file) {
    BY_HANDLE_FILE_INFORMATION info = {};
    GetFileInformationByHandle(file, &info);
    return {info.dwVolumeSerialNumber, info.nFileIndexHigh, info.nFileIndexLow, info.nFileSizeHigh,
            info.nFileSizeLow};
}

void WriteToLog(const wchar_t *text, int length, bool closing) {
    AcquireSRWLockExclusive(&gLogLock);
    if (gLogState.file) {
        DWORD written = 0;
        WriteFile(gLogState.file, text, static_cast<DWORD>(length) * sizeof(wchar_t), &written, nullptr);
        FlushFileBuffers(gLogState.file);
        if (closing) {
            gLogState.closedLog = IdentifyLog(gLogState.file);
            CloseHandle(gLogState.file);
            gLogState.file = nullptr;
        }
    }
    ReleaseSRWLockExclusive(&gLogLock);
}

// No code page makes more UTF-16 units than it has bytes, so a buffer of the narrow length is always enough.
// A line cut for want of memory keeps its line end.
void AppendToLog(const FormattedText &line, bool closing) {
    constexpr int kLocalLength = 512;
    wchar_t local[kLocalLength];
    int length = static_cast<int>(line.length);
    bool cut = line.cut;
    wchar_t *wide = local;
    if (length > kLocalLength) {
        wide = static_cast<wchar_t *>(malloc(static_cast<size_t>(length) * sizeof(wchar_t)));
        if (!wide) {
            wide = local;
            length = kLocalLength;
            cut = true;
        }
    }
    const int wideLength = MultiByteToWideChar(CP_ACP, 0, line.text, length, wide, length);
    if (cut && wideLength > 0)
        wide[wideLength - 1] = L'\n';
    WriteToLog(wide, wideLength, closing);
    if (wide != local)
        free(wide);
}

void AppendFormatted(bool closing, const char *format, va_list arguments) {
    const DWORD lastError = GetLastError();
    if (IsLogOpen()) {
        FormattedText line;
        FormatText(&line, format, arguments);
        AppendToLog(line, closing);
        FreeText(&line);
    }
    SetLastError(lastError);
}

void WriteLastLine(const char *format, ...) BX_PRINTF(1, 2);

void WriteLastLine(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    AppendFormatted(true, format, arguments);
    va_end(arguments);
}

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
    strcpy(gLogState.path, path);
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
    strcpy(gLogState.path, path);
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
    AcquireSRWLockExclusive(&gLogLock);
    gLogState.file = file;
    ReleaseSRWLockExclusive(&gLogLock);
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

void WriteLogLine(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    AppendFormatted(false, format, arguments);
    va_end(arguments);
}

void CloseLog() {
    char now[kLongTimeCapacity];
    FormatLocalTime(now, sizeof now, kLongTimeFormat);
    WriteLastLine("\n%s Log closed %s.\n", kLogName, now);
}

void SetReportOwner(NativeWindow window, uint32_t threadId) {
    gLogState.ownerThread = threadId;
    SetReportOwnerWindow(window);
}

NativeWindow SetReportOwnerWindow(NativeWindow window) {
    const HWND previous = gLogState.ownerWindow;
    gLogState.ownerWindow = static_cast<HWND>(window);
    return previous;
}

bool IsReportOwnerThread() {
    return gLogState.ownerThread == GetCurrentThreadId();
}
