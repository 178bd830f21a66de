#include "web/UpdateRecord.h"

#include "diag/ErrorReport.h"
#include "storage/AppFolders.h"
#include "storage/AtomicFile.h"

#include <cstdio>

namespace {

constexpr char kFileName[] = "UpdateNotice.bin";
constexpr uint32_t kSitePath = 20, kSiteRead = 37;

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

} // namespace

UpdateRecord LoadUpdateRecord() {
    char path[kMaxPath];
    WidePath wide;
    FILE *file = FormatRecordPath(path) && WidenPath(path, &wide) ? _wfopen(SystemPath(wide.text).text, L"rb")
                                                                  : nullptr;
    if (!file)
        return kDefaultUpdateRecord;
    UpdateRecord record;
    const bool whole = fread(&record, 1, sizeof record, file) == sizeof record;
    fclose(file);
    if (whole && IsRecord(record))
        return record;
    ReportError({kSiteRead, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                "LoadUpdateRecord() failed with FilePath = '%s'", path);
    return kDefaultUpdateRecord;
}

bool SaveUpdateRecord(const UpdateRecord &record) {
    char path[kMaxPath];
    return FormatRecordPath(path) && WriteFileAtomically(path, &record, sizeof record);
}
