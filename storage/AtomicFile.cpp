#include "storage/AtomicFile.h"

#include "diag/ErrorReport.h"
#include "storage/WidePath.h"

#include <cstdio>
#include <cwchar>
#include <windows.h>

namespace {

constexpr uint32_t kSiteReadOnly = 31, kSiteFolder = 38, kSiteTemporaryName = 52, kSiteOpen = 66,
                   kSiteWrite = 79, kSiteFlush = 83, kSiteClose = 88, kSiteReplace = 101, kSiteWiden = 114;

bool ReportFailure(uint32_t site, const char *call, const wchar_t *path) {
    const ErrorRecord record = {site, kSystemError, static_cast<uint32_t>(GetLastError())};
    ReportError(record, kStopIcon, kTitleUnexpected, "%s() failed with FilePath = '%s'", call,
                DescribePath(path).text);
    return false;
}

// Asked for first, because not every system that runs this refuses to replace a file that is marked
// read-only.
bool MayBeReplaced(const wchar_t *path) {
    const DWORD attributes = GetFileAttributesW(path);
    if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_READONLY))
        return true;
    SetLastError(ERROR_ACCESS_DENIED);
    return ReportFailure(kSiteReadOnly, "GetFileAttributes", path);
}

// The folder of `path` with its last separator; the current folder for a bare name.
bool CopyFolder(const wchar_t *path, wchar_t (&folder)[MAX_PATH]) {
    size_t length = wcslen(path);
    while (length > 0 && path[length - 1] != L'\\' && path[length - 1] != L'/')
        --length;
    if (length >= MAX_PATH) {
        SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return ReportFailure(kSiteFolder, "_tcscpy_s", path);
    }
    wmemcpy(folder, path, length);
    folder[length] = L'\0';
    if (length == 0)
        wcscpy(folder, L".");
    return true;
}

// The system makes the name and, so that nobody else takes it, the empty file.
bool CreateTemporaryFile(const wchar_t *path, wchar_t (&temporaryPath)[MAX_PATH]) {
    wchar_t folder[MAX_PATH];
    if (!CopyFolder(path, folder))
        return false;
    if (GetTempFileNameW(folder, L"brx", 0, temporaryPath) == 0)
        return ReportFailure(kSiteTemporaryName, "GetTempFileName", path);
    return true;
}

bool FillFile(HANDLE file, const wchar_t *path, const void *data, size_t size) {
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

bool WriteTemporaryFile(const wchar_t *temporaryPath, const wchar_t *path, const void *data, size_t size) {
    const HANDLE file = CreateFileW(temporaryPath, GENERIC_WRITE, 0, nullptr, TRUNCATE_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return ReportFailure(kSiteOpen, "CreateFile", path);
    const bool filled = FillFile(file, path, data, size);
    if (!CloseHandle(file))
        return ReportFailure(kSiteClose, "CloseHandle", path);
    return filled;
}

} // namespace

bool WriteFileAtomically(const wchar_t *path, const void *data, size_t size) {
    wchar_t temporaryPath[MAX_PATH];
    if (!MayBeReplaced(path) || !CreateTemporaryFile(path, temporaryPath))
        return false;
    bool done = WriteTemporaryFile(temporaryPath, path, data, size);
    if (done && !MoveFileExW(temporaryPath, path, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        done = ReportFailure(kSiteReplace, "MoveFileEx", path);
    if (!done)
        DeleteFileW(temporaryPath);
    return done;
}

bool WriteFileAtomically(const char *path, const void *data, size_t size) {
    WidePath wide;
    if (WidenPath(path, &wide))
        return WriteFileAtomically(wide.text, data, size);
    const ErrorRecord record = {kSiteWiden, kSystemError, ERROR_FILENAME_EXCED_RANGE};
    ReportError(record, kStopIcon, kTitleUnexpected, "MultiByteToWideChar() failed with FilePath = '%s'",
                path);
    return false;
}
