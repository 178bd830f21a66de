#include "web/UpdateNotice.h"

#include "diag/ErrorReport.h"
#include "diag/ProcessLock.h"
#include "diag/module/ProductName.h"
#include "storage/AppFolders.h"
#include "web/UpdateRecord.h"
#include "web/UpdateRequest.h"

#include <atomic>
#include <cstdio>
#include <ctime>
#include <windows.h>

namespace {

constexpr uint32_t kSiteThread = 71, kSiteModule = 77, kSiteAnswer = 58, kSiteLock = 64;
constexpr int64_t kDay = 86400; // seconds

std::atomic<bool> gCheckRunning;

// Calls change(&record), which answers whether to keep what it did. False when nothing was kept. The lock
// keeps other processes out too, and the asking thread; a reader needs none, because the file is replaced
// whole.
template <typename Change> bool ChangeRecord(Change change) {
    void *lock = TakeProcessLock("update record", gSettingsFolder);
    if (!lock) {
        ReportError({kSiteLock, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "TakeProcessLock() failed with Settings Directory = '%s'", gSettingsFolder);
        return false;
    }
    UpdateRecord record;
    const bool kept = ReadUpdateRecord(&record) && change(&record) && SaveUpdateRecord(record);
    ReleaseProcessLock(lock);
    return kept;
}

// A time ahead of the clock is as old as it is far: a clock that was wrong once does not silence the notice
// for long.
bool IsDue(const UpdateRecord &record, int64_t now) {
    const int64_t age = now - record.lastAsked;
    return record.isOn != 0 && (age >= kDay || age <= -kDay);
}

// Noted before the question: a question that cannot be noted would be asked at every opening.
bool TakeTurn() {
    const int64_t now = static_cast<int64_t>(std::time(nullptr));
    return ChangeRecord([now](UpdateRecord *record) {
        const bool due = IsDue(*record, now);
        record->lastAsked = now;
        return due;
    });
}

// A text file of one line ends in a line break.
size_t LengthOfLine(const UpdateAnswer &answer) {
    size_t length = answer.length;
    if (length > 0 && answer.text[length - 1] == '\n')
        length -= length > 1 && answer.text[length - 2] == '\r' ? 2 : 1;
    return length;
}

void UseAnswer(const UpdateAnswer &answer) {
    ModuleVersion newest = {};
    const char *failure = answer.failure;
    if (failure == kUpdateUnwanted)
        return;
    if (!failure && !ParseVersion(answer.text, LengthOfLine(answer), &newest))
        failure = "it is no version number";
    if (failure) {
        ReportError({kSiteAnswer, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "AskUpdateService() failed with Address = '%s', Code = '%u' and Reason = '%s'",
                    CurrentUpdateService().address, answer.code, failure);
        return;
    }
    ChangeRecord([&newest](UpdateRecord *record) {
        const bool changed = record->isOn && CompareVersions(newest, record->newest) != 0;
        record->newest = newest;
        return changed;
    });
}

void Ask() {
    char version[kVersionTextCapacity], userAgent[64];
    FormatVersion(ReadModuleVersion(), version);
    snprintf(userAgent, sizeof userAgent, "BrillatrixPro/%s", version);
    UpdateRequest *request = nullptr;
    UseAnswer(AskUpdateService(CurrentUpdateService(), userAgent, &request));
    EndUpdateRequest(request);
}

DWORD WINAPI RunUpdateCheck(void *) {
    if (TakeTurn())
        Ask();
    gCheckRunning = false;
    return 0;
}

// The request's last call from the system comes on a thread of the system's, and nothing tells when that
// thread has left our code.
bool KeepModuleLoaded() {
    HMODULE module = nullptr;
    if (GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                           reinterpret_cast<const char *>(&RunUpdateCheck), &module))
        return true;
    ReportError({kSiteModule, kSystemError, static_cast<uint32_t>(GetLastError())}, kStopIcon,
                kTitleUnexpected, "GetModuleHandleEx() failed.");
    return false;
}

bool StartThread() {
    const HANDLE thread = CreateThread(nullptr, 0, RunUpdateCheck, nullptr, 0, nullptr);
    if (thread) {
        CloseHandle(thread);
        return true;
    }
    ReportError({kSiteThread, kSystemError, static_cast<uint32_t>(GetLastError())}, kStopIcon,
                kTitleUnexpected, "CreateThread() failed.");
    return false;
}

} // namespace

bool CanNoticeUpdates() {
    return *CurrentUpdateService().address != '\0';
}

bool IsUpdateNoticeOn() {
    return CanNoticeUpdates() && LoadUpdateRecord().isOn != 0;
}

bool SetUpdateNotice(bool on) {
    WantUpdateRequests(on);
    return ChangeRecord([on](UpdateRecord *record) {
        record->isOn = on ? 1 : 0;
        return true;
    });
}

void StartUpdateCheck() {
    if (!CanNoticeUpdates() || !IsDue(LoadUpdateRecord(), static_cast<int64_t>(std::time(nullptr))) ||
        gCheckRunning.exchange(true))
        return;
    if (!KeepModuleLoaded() || !StartThread())
        gCheckRunning = false;
}

bool IsUpdateCheckRunning() {
    return gCheckRunning;
}

bool NewVersionKnown(char *text, size_t capacity) {
    const UpdateRecord record = LoadUpdateRecord();
    if (!CanNoticeUpdates() || !record.isOn || CompareVersions(record.newest, ReadModuleVersion()) <= 0)
        return false;
    char notice[128];
    const int length =
        snprintf(notice, sizeof notice, "A New Version of %s is Available Online", kProductName);
    if (length < 0 || static_cast<size_t>(length) >= capacity)
        return false;
    snprintf(text, capacity, "%s", notice);
    return true;
}
