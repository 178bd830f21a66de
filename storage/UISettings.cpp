#include "storage/UISettings.h"

#include "diag/ErrorReport.h"
#include "storage/AppFolders.h"
#include "storage/AtomicFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <initializer_list>

namespace {

constexpr char kFileName[] = "UISettings.bin";
constexpr uint32_t kSitePath = 1071, kSiteOpen = 1089, kSiteRead = 1101, kSiteVersion = 1128;

UISettings gUISettings = kDefaultUISettings;
bool gUISettingsLoaded = false;

bool FormatSettingsPath(char (&path)[kMaxPath]) {
    const int printed = snprintf(path, sizeof path, "%s\\%s", gSettingsFolder, kFileName);
    if (*gSettingsFolder && printed >= 0 && static_cast<size_t>(printed) < sizeof path)
        return true;
    ReportError({kSitePath, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                "_stprintf_s() failed with Settings Directory = '%s'", gSettingsFolder);
    return false;
}

// A first run has no file, and that is no failure.
bool ReadSettingsFile(const char *path, UISettings *settings) {
    WidePath wide;
    errno = ENAMETOOLONG;
    FILE *file = WidenPath(path, &wide) ? _wfopen(SystemPath(wide.text).text, L"rb") : nullptr;
    if (!file) {
        if (errno != ENOENT)
            ReportError({kSiteOpen, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                        "_tfopen() failed with FilePath = '%s' and errno = '%d'", path, errno);
        return false;
    }
    UISettings read;
    errno = 0;
    const size_t bytesRead = fread(&read, 1, sizeof read, file);
    const int error = errno;
    fclose(file);
    if (bytesRead != sizeof read) {
        ReportError({kSiteRead, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "fread() failed with FilePath = '%s', errno = '%d' and BytesRead = '%zu'", path, error,
                    bytesRead);
        return false;
    }
    *settings = read;
    return true;
}

bool IsCurrentVersion(const UISettings &settings) {
    const uint16_t *v = settings.version;
    if (memcmp(v, kDefaultUISettings.version, sizeof settings.version) == 0)
        return true;
    ReportError({kSiteVersion, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                "User Setting File version mismatch. File Version = '%d','%d','%d','%d'", v[0], v[1], v[2],
                v[3]);
    return false;
}

// The fields index tables and place windows.
void RepairFields(UISettings *settings) {
    if (settings->viewTool < kFirstViewTool || settings->viewTool > kLastViewTool)
        settings->viewTool = kDefaultViewTool;
    settings->previewFlag = settings->previewFlag != 0;
    if (settings->debugDisplayChoice > kLastDebugDisplayChoice)
        settings->debugDisplayChoice = kDefaultUISettings.debugDisplayChoice;
    for (ScreenRect *rect : {&settings->dialogRect, &settings->debugViewerRect})
        if (IsEmptyScreenRect(*rect))
            *rect = {0, 0, 0, 0};
}

} // namespace

bool LoadUISettings() {
    char path[kMaxPath];
    UISettings read;
    if (FormatSettingsPath(path) && ReadSettingsFile(path, &read) && IsCurrentVersion(read)) {
        RepairFields(&read);
        gUISettings = read;
        gUISettingsLoaded = true;
    }
    return gUISettingsLoaded;
}

bool SaveUISettings() {
    char path[kMaxPath];
    return FormatSettingsPath(path) && WriteFileAtomically(path, &gUISettings, sizeof gUISettings);
}

ScreenRect GetDialogRect() {
    return gUISettings.dialogRect;
}

void SetDialogRect(const ScreenRect &rect) {
    gUISettings.dialogRect = rect;
}

uint32_t GetViewTool() {
    return gUISettings.viewTool;
}

void SetViewTool(uint32_t tool) {
    gUISettings.viewTool = tool;
}

uint32_t GetPreviewFlag() {
    return gUISettings.previewFlag;
}

void SetPreviewFlag(uint32_t flag) {
    gUISettings.previewFlag = flag;
}

ScreenRect GetDebugViewerRect() {
    return gUISettings.debugViewerRect;
}

void SetDebugViewerRect(const ScreenRect &rect) {
    gUISettings.debugViewerRect = rect;
}

uint32_t GetDebugDisplayChoice() {
    return gUISettings.debugDisplayChoice;
}

void SetDebugDisplayChoice(uint32_t choice) {
    gUISettings.debugDisplayChoice = choice;
}

bool AreUISettingsLoaded() {
    return gUISettingsLoaded;
}
