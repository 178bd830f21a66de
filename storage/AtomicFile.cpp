#include "storage/AtomicFile.h"

#include "diag/ErrorReport.h"

#include <cstdio>
#include <cstring>
#include <windows.h>

namespace {

constexpr uint32_t kSiteReadOnly = 31, kSiteFolder = 38, kSiteTemporaryName = 52, kSiteOpen = 66,
                   kSiteWrite = 79, kSiteFlush = 83, kSiteClose = 88, kSiteReplace = 101;

bool ReportFailure(uint32_t site, const char *call, const char *path) {
    const ErrorRecord record = {site, kSystemError, static_cast<uint32_t>(GetLastError())};
    ReportError(record, kStopIcon, kTitleUnexpected, "%s() failed with FilePath = '%s'", call, path);
    return false;
}

// Asked for first, because not every system that runs this refuses to replace a file that is marked
// read-only.
bool MayBeReplaced(const char *path) {
    const DWORD attributes = GetFileAttributesA(path);
    if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_READONLY))
        return true;
    SetLastError(ERROR_ACCESS_DENIED);
    return ReportFailure(kSiteReadOnly, "GetFileAttributes", path);
}

// The folder of `path` with its last separator; the current folder for a bare name.
bool CopyFolder(const char *path, char (&folder)[MAX_PATH]) {
    size_t length = strlen(path);
    while (length > 0 && path[length - 1] != '\\' && path[length - 1] != '/')
        --length;
    if (length >= sizeof folder) {
        SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return ReportFailure(kSiteFolder, "_tcscpy_s", path);
    }
    memcpy(folder, path, length);
    folder[length] = '\0';
    if (length == 0)
        memcpy(folder, ".", sizeof ".");
    return true;
}

// The system makes the name and, so that nobody else takes it, the empty file.
bool CreateTemporaryFile(const char *path, char (&temporaryPath)[MAX_PATH]) {
    char folder[MAX_PATH];
    if (!CopyFolder(path, folder))
        return false;
    if (GetTempFileNameA(folder, "brx", 0, temporaryPath) == 0)
        return ReportFailure(kSiteTemporaryName, "GetTempFileName", path);
    return true;
}

bool FillFile(HANDLE file, const char *path, const void *data, size_t size) {
    DWORD written = 0;
    if (!WriteFile(file, data, static_cast<DWORD>(size), &written, nullptr))
        return ReportFailure(kSiteWrite, "WriteFile", path);
    if (written != size) {
        SetLastError(ERROR_DISK_FULL);
        return ReportFailure(kSiteWrite, "WriteFile", path);
    }
    if (!FlushFileBuffers(file))
        return ReportFailure(kSiteFlush, "FlushFileBuffers", path);
    return true;
}

bool WriteTemporaryFile(const char *temporaryPath, const char *path, const void *data, size_t size) {
    const HANDLE file = CreateFileA(temporaryPath, GENERIC_WRITE, 0, nullptr, TRUNCATE_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return ReportFailure(kSiteOpen, "CreateFile", path);
    const bool filled = FillFile(file, path, data, size);
    if (!CloseHandle(file))
        return ReportFailure(kSiteClose, "CloseHandle", path);
    return filled;
}

} // namespace

bool WriteFileAtomically(const char *path, const void *data, size_t size) {
    char temporaryPath[MAX_PATH];
    if (!MayBeReplaced(path) || !CreateTemporaryFile(path, temporaryPath))
        return false;
    bool done = WriteTemporaryFile(temporaryPath, path, data, size);
    if (done && !MoveFileExA(temporaryPath, path, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        done = ReportFailure(kSiteReplace, "MoveFileEx", path);
    if (!done)
        DeleteFileA(temporaryPath);
    return done;
}
