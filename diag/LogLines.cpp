#include "diag/LogLines.h"

#include "diag/FormattedText.h"
#include "diag/LogState.h"

#include <cstdarg>
#include <cstdlib>

namespace {

// Held while a line is written and while the file changes, so that lines stay whole and none follows the
// last.
SRWLOCK gLogLock = SRWLOCK_INIT;

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

} // namespace

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

void SetLogFile(HANDLE file) {
    AcquireSRWLockExclusive(&gLogLock);
    gLogState.file = file;
    ReleaseSRWLockExclusive(&gLogLock);
}

void WriteLogLine(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    AppendFormatted(false, format, arguments);
    va_end(arguments);
}

void WriteLastLogLine(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    AppendFormatted(true, format, arguments);
    va_end(arguments);
}
