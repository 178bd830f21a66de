#include "diag/ErrorReport.h"

#include "diag/FormattedText.h"
#include "diag/LogLines.h"
#include "diag/LogState.h"
#include "diag/ReportOwner.h"

#include <cstring>
#include <windows.h>

namespace {

void ShowUserMessage(uint32_t messageBoxFlags, const char *title, const char *message) {
    // With a window that is gone the box would not open at all; without an owner it still does.
    const HWND owner = IsWindow(gLogState.ownerWindow) ? gLogState.ownerWindow : nullptr;
    MessageBoxA(owner, message, title, messageBoxFlags | MB_SETFOREGROUND);
}

// The system's texts may contain inserts, for which no arguments exist here.
void LogSystemError(const ErrorRecord &record, const char *now, const char *title, const char *message) {
    constexpr DWORD options =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    char *systemText = nullptr;
    FormatMessageA(options, nullptr, record.systemError, 0, reinterpret_cast<char *>(&systemText), 0,
                   nullptr);
    if (systemText) {
        if (char *lineEnd = strstr(systemText, "\r\n"))
            *lineEnd = '\0';
    }
    WriteLogLine("%s : Line %u: System Error: '%s' : '%s' - '%s'\n", now, record.line,
                 systemText ? systemText : "Unidentified System Error", title, message);
    LocalFree(systemText);
}

void DeliverReport(const ErrorRecord &record, uint32_t messageBoxFlags, const char *title,
                   const char *message) {
    char now[16];
    FormatLocalTime(now, sizeof now, "%H:%M:%S");
    switch (record.kind) {
    case kDebugMessage:
    case kOtherDebugMessage:
        WriteLogLine("%s : Line %u: Debug Message: '%s' - '%s'\n", now, record.line, title, message);
        break;
    case kUserMessage:
        WriteLogLine("%s : Line %u: User Message: '%s' - '%s'\n", now, record.line, title, message);
        if (IsReportOwnerThread())
            ShowUserMessage(messageBoxFlags, title, message);
        break;
    case kSystemError:
        LogSystemError(record, now, title, message);
        break;
    default:
        break;
    }
}

} // namespace

// The thread's last error is kept, so that a report may stand between a failed call and the code that asks
// why.
void ReportError(const ErrorRecord &record, uint32_t messageBoxFlags, const char *title, const char *format,
                 ...) {
    const DWORD lastError = GetLastError();
    if (strcmp(title, kTitleExiting) == 0)
        gFatalErrorStatus = record.line;
    FormattedText message;
    va_list arguments;
    va_start(arguments, format);
    FormatText(&message, format, arguments);
    va_end(arguments);
    DeliverReport(record, messageBoxFlags, title, message.text);
    FreeText(&message);
    SetLastError(lastError);
}
