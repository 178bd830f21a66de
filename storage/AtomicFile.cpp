#include "storage/AtomicFile.h"

#include "diag/ErrorReport.h"
#include "diag/WidePath.h"
#include "storage/FoundFiles.h"

#include <atomic>
#include <cstdint>
#include <cwchar>
#include <windows.h>

namespace {

constexpr uint32_t kSiteReadOnly = 31, kSiteFolder = 38, kSiteOpen = 66, kSiteWrite = 79, kSiteFlush = 83,
                   kSiteClose = 88, kSiteReplace = 101, kSiteWiden = 114;

constexpr uint64_t kReplaceLimit = 500; // milliseconds
constexpr DWORD kReplacePause = 10;
constexpr wchar_t kPrefix[] = L"brx", kEnding[] = L".tmp"; // of a temporary file's name, with digits between
constexpr wchar_t kDigits[] = L"0123456789abcdefABCDEF";
constexpr uint64_t kOld = 24ull * 3600 * 10000000; // a day, in the units of a file's time

std::atomic<unsigned> gTemporaryFiles; // made by this process

bool ReportFailure(uint32_t site, const char *call, const wchar_t *path) {
    const ErrorRecord record = {site, kSystemError, static_cast<uint32_t>(GetLastError())};
    ReportError(record, kStopIcon, kTitleUnexpected, "%s() failed with FilePath = '%s'", call,
                DescribePath(path).text);
    return false;
}

// Asked for first, because not every system that runs this refuses to replace a file that is marked
// read-only.
bool MayBeReplaced(const wchar_t *path) {
    const DWORD attributes = GetFileAttributesW(SystemPath(path).text);
    if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_READONLY))
        return true;
    const ErrorRecord record = {kSiteReadOnly, kSystemError, ERROR_ACCESS_DENIED};
    ReportError(record, kStopIcon, kTitleUnexpected,
                "WriteFileAtomically() failed with read-only FilePath = '%s'", DescribePath(path).text);
    return false;
}

// A name beside `path` that nobody else makes: of this process, and not made twice. A text that is too long
// is cut, and its whole length told.
bool FormTemporaryPath(const wchar_t *path, WidePath *temporary) {
    const int folder = static_cast<int>(FileNameOf(path) - path);
    const int printed = swprintf(temporary->text, kMaxPath, L"%.*ls%ls%08lx%08lx%04x%ls", folder, path,
                                 kPrefix, GetCurrentProcessId(), GetTickCount(), gTemporaryFiles++, kEnding);
    if (printed > 0 && printed < static_cast<int>(kMaxPath))
        return true;
    SetLastError(ERROR_FILENAME_EXCED_RANGE);
    return ReportFailure(kSiteFolder, "_tcscpy_s", path);
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
    const HANDLE file =
        CreateFileW(temporaryPath, GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return ReportFailure(kSiteOpen, "CreateFile", path);
    bool done = FillFile(file, path, data, size);
    if (!CloseHandle(file))
        done = ReportFailure(kSiteClose, "CloseHandle", path);
    if (!done)
        DeleteFileW(temporaryPath);
    return done;
}

// Programs that read every new file, or keep copies of it, hold it open for a moment.
bool PutInPlace(const wchar_t *temporaryPath, const wchar_t *path) {
    const ULONGLONG begun = GetTickCount64();
    while (!MoveFileExW(temporaryPath, SystemPath(path).text,
                        MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        const DWORD error = GetLastError();
        const bool isHeld = error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION;
        if (!isHeld || GetTickCount64() - begun >= kReplaceLimit) {
            ReportFailure(kSiteReplace, "MoveFileEx", path);
            DeleteFileW(temporaryPath);
            return false;
        }
        Sleep(kReplacePause);
    }
    return true;
}

bool IsTemporaryName(const wchar_t *name) {
    const wchar_t *digits = name + wcslen(kPrefix);
    return _wcsnicmp(name, kPrefix, wcslen(kPrefix)) == 0 &&
           _wcsicmp(digits + wcsspn(digits, kDigits), kEnding) == 0;
}

bool IsOld(const FILETIME &written) {
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    const auto ticks = [](const FILETIME &t) { return uint64_t(t.dwHighDateTime) << 32 | t.dwLowDateTime; };
    return ticks(now) > ticks(written) && ticks(now) - ticks(written) > kOld;
}

} // namespace

bool WriteFileAtomically(const wchar_t *path, const void *data, size_t size) {
    WidePath formed;
    if (!MayBeReplaced(path) || !FormTemporaryPath(path, &formed))
        return false;
    const WidePath temporary = SystemPath(formed.text);
    return WriteTemporaryFile(temporary.text, path, data, size) && PutInPlace(temporary.text, path);
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

void RemoveOldTemporaryFiles(const char *folder) {
    WidePath wide, path;
    if (!*folder || !WidenPath(folder, &wide) || !JoinPath(wide.text, L"brx*.tmp", &path))
        return;
    TakeFoundFiles(path.text, [&](const WIN32_FIND_DATAW &found) {
        if (IsTemporaryName(found.cFileName) && IsOld(found.ftLastWriteTime) &&
            JoinPath(wide.text, found.cFileName, &path))
            DeleteFileW(SystemPath(path.text).text); // of a folder it does nothing
    });
}
