#include "web/UpdateRecord.h"

#include "diag/ErrorReport.h"
#include "storage/AppFolders.h"
#include "storage/AtomicFile.h"

#include <cstdio>
#include <windows.h>

namespace {

constexpr char kFileName[] = "UpdateNotice.bin";
constexpr uint32_t kSitePath = 20, kSiteOpen = 31, kSiteRead = 37;
constexpr ULONGLONG kOpenLimit = 500; // milliseconds
constexpr DWORD kOpenPause = 10;

bool FormatRecordPath(char (&path)[kMaxPath]) {
    const int printed = snprintf(path, sizeof path, "%s\\%s", gSettingsFolder, kFileName);
    if (*gSettingsFolder && printed >= 0 && static_cast<size_t>(printed) < sizeof path)
        return true;
    ReportError({kSitePath, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                "_stprintf_s() failed with Settings Directory = '%s'", gSettingsFolder);
    return false;
}

bool IsRecord(const UpdateRecord &record) {
    return record.magic == kUpdateRecordMagic && record.isOn <= 1 && record.lastAsked >= 0;
}

// Programs that read every file hold it for a moment. Null, reported unless it is missing, when it cannot be
// opened.
FILE *OpenWhenFree(const wchar_t *path, bool *isMissing) {
    const ULONGLONG begun = GetTickCount64();
    for (;;) {
        if (FILE *file = _wfopen(SystemPath(path).text, L"rb"))
            return file;
        const DWORD error = GetLastError();
        *isMissing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
        const bool isHeld = error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION;
        if (isHeld && GetTickCount64() - begun < kOpenLimit) {
            Sleep(kOpenPause);
            continue;
        }
        if (!*isMissing)
            ReportError({kSiteOpen, kSystemError, static_cast<uint32_t>(error)}, kStopIcon, kTitleUnexpected,
                        "_tfopen() failed with FilePath = '%s'", DescribePath(path).text);
        return nullptr;
    }
}

} // namespace

bool ReadUpdateRecord(UpdateRecord *record) {
    *record = kDefaultUpdateRecord;
    char path[kMaxPath];
    WidePath wide;
    if (!FormatRecordPath(path) || !WidenPath(path, &wide))
        return false;
    bool isMissing = false;
    FILE *file = OpenWhenFree(wide.text, &isMissing);
    if (!file)
        return isMissing;
    UpdateRecord found;
    const bool whole = fread(&found, 1, sizeof found, file) == sizeof found;
    fclose(file);
    if (whole && IsRecord(found))
        *record = found;
    else
        ReportError({kSiteRead, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "LoadUpdateRecord() failed with FilePath = '%s'", path);
    return true;
}

UpdateRecord LoadUpdateRecord() {
    UpdateRecord record;
    ReadUpdateRecord(&record);
    return record;
}

bool SaveUpdateRecord(const UpdateRecord &record) {
    char path[kMaxPath];
    return FormatRecordPath(path) && WriteFileAtomically(path, &record, sizeof record);
}
