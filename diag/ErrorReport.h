// The single error reporter: one log line for every failure, and a message box for those meant for the user.
#pragma once

#include "diag/Compiler.h"

#include <atomic>
#include <cstdint>

// Values of ErrorRecord::kind. Any other value is neither logged nor shown.
constexpr uint32_t kDebugMessage = 0;      // logged only
constexpr uint32_t kUserMessage = 1;       // logged, and shown when raised on the log's owner thread
constexpr uint32_t kSystemError = 2;       // logged with the system's text for systemError
constexpr uint32_t kOtherDebugMessage = 3; // logged only, as kDebugMessage

// Message box styles, with the system's values.
constexpr uint32_t kStopIcon = 16;
constexpr uint32_t kWarningIcon = 48;
constexpr uint32_t kInformationIcon = 64;

constexpr char kTitleUnexpected[] = "Debug:  Unexpected Error"; // two blanks after the colon
constexpr char kTitleExiting[] = "Error - Exiting Plugin";
constexpr char kTitleWarning[] = "Warning";

struct ErrorRecord {
    uint32_t line;        // site code, fixed at the call site; printed as "Line %u"
    uint32_t kind;        // one of the kinds above
    uint32_t systemError; // for kSystemError the system's error code, else 0
};

// The site code of the last report under kTitleExiting, or 0: the dialog ends on it. Whoever begins a run
// clears it. Any thread.
inline std::atomic<uint32_t> gFatalErrorStatus;

// Formats the message and logs or shows it by kind. May be called from any thread. Never fails visibly and
// never throws; without an open log it only shows user messages, and only on the owner thread.
void ReportError(const ErrorRecord &record, uint32_t messageBoxFlags, const char *title, const char *format,
                 ...) BX_PRINTF(4, 5);
