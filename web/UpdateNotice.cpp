#include "web/UpdateNotice.h"

#include "diag/ErrorReport.h"
#include "diag/ProductName.h"
#include "web/UpdateRecord.h"
#include "web/UpdateRequest.h"

#include <atomic>
#include <cstdio>
#include <ctime>
#include <windows.h>

namespace {

constexpr uint32_t kSiteThread = 71, kSiteModule = 77, kSiteAnswer = 55, kSiteIgnored = 58;
constexpr int64_t kDay = 86400; // seconds
constexpr char kTitle[] = "Update Notice";

// Held for every reading and writing of the record: the asking thread keeps its answer there.
SRWLOCK gRecordLock = SRWLOCK_INIT;
std::atomic<bool> gCheckRunning;

UpdateRecord ReadRecord() {
    AcquireSRWLockExclusive(&gRecordLock);
    const UpdateRecord record = LoadUpdateRecord();
    ReleaseSRWLockExclusive(&gRecordLock);
    return record;
}

// Calls change(&record), which answers whether to keep what it did. False when nothing was kept.
template <typename Change> bool ChangeRecord(Change change) {
    AcquireSRWLockExclusive(&gRecordLock);
    UpdateRecord record = LoadUpdateRecord();
    const bool kept = change(&record) && SaveUpdateRecord(record);
    ReleaseSRWLockExclusive(&gRecordLock);
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

void UseAnswer(const UpdateAnswer &answer) {
    ModuleVersion newest = {};
    char text[kVersionTextCapacity];
    const char *failure = answer.failure;
    if (!failure && !ParseVersion(answer.text, answer.length, &newest))
        failure = "it is no version number";
    if (failure) {
        ReportError({kSiteIgnored, kDebugMessage, 0}, kWarningIcon, kTitle,
                    "The answer of '%s' is ignored: %s (%u)", CurrentUpdateService().address, failure,
                    answer.code);
        return;
    }
    FormatVersion(newest, text);
    ReportError({kSiteAnswer, kDebugMessage, 0}, kWarningIcon, kTitle, "The newest version is %s", text);
    ChangeRecord([&newest](UpdateRecord *record) {
        const bool changed = CompareVersions(newest, record->newest) != 0;
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
    return CanNoticeUpdates() && ReadRecord().isOn != 0;
}

bool SetUpdateNotice(bool on) {
    return ChangeRecord([on](UpdateRecord *record) {
        record->isOn = on ? 1 : 0;
        return true;
    });
}

void StartUpdateCheck() {
    if (!CanNoticeUpdates() || !IsDue(ReadRecord(), static_cast<int64_t>(std::time(nullptr))) ||
        gCheckRunning.exchange(true))
        return;
    if (!KeepModuleLoaded() || !StartThread())
        gCheckRunning = false;
}

bool IsUpdateCheckRunning() {
    return gCheckRunning;
}

bool NewVersionKnown(char *text, size_t capacity) {
    const UpdateRecord record = ReadRecord();
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
