#include "host/base/FileBytes.h"

#include "host/base/Display.h"
#include "host/base/SystemText.h"
#include "host/base/UnixFile.h"

#include <algorithm>
#include <list>
#include <mutex>

namespace host {

constexpr size_t kSmallPiece = 1u << 20;    // of what comes over a pipe
constexpr DWORD kLongestTidying = 1500;     // milliseconds
constexpr size_t kLargestPiece = 16u << 20; // of one system call

static bool FailWithError(std::string *why) {
    *why = SystemErrorText(GetLastError());
    return false;
}

static bool ReadOpenFile(HANDLE file, uint64_t most, Bytes *bytes, std::string *why) {
    LARGE_INTEGER size;
    if (!GetFileSizeEx(file, &size))
        return FailWithError(why);
    const uint64_t wanted = std::min(static_cast<uint64_t>(size.QuadPart), most);
    if (wanted > 0xFFFFFFFFull) {
        *why = "it is larger than 4 GB";
        return false;
    }
    Bytes read(static_cast<size_t>(wanted));
    for (size_t at = 0; at < read.size();) {
        DWORD count = 0;
        const DWORD piece = static_cast<DWORD>(std::min(read.size() - at, kLargestPiece));
        if (!ReadFile(file, read.data() + at, piece, &count, nullptr))
            return FailWithError(why);
        if (count == 0) {
            *why = "it became shorter while it was read";
            return false;
        }
        at += count;
    }
    *bytes = std::move(read);
    return true;
}

bool ReadFileStart(const std::wstring &path, uint64_t most, Bytes *bytes, std::string *why) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return FailWithError(why);
    bool done = false;
    try {
        done = ReadOpenFile(file, most, bytes, why);
    } catch (const std::bad_alloc &) {
        *why = "not enough memory";
    }
    CloseHandle(file);
    return done;
}

bool ReadWholeFile(const std::wstring &path, Bytes *bytes, std::string *why) {
    return ReadFileStart(path, UINT64_MAX, bytes, why);
}

bool ReadStandardInput(Bytes *bytes, std::string *why) {
    const HANDLE in = GetStdHandle(STD_INPUT_HANDLE);
    DWORD count = 0;
    for (size_t length = 0;; length += count) {
        if (length > 0xFFFFFFFFull)
            return Fail(why, "it is larger than 4 GB");
        if (length + kSmallPiece > bytes->size())
            bytes->resize(std::max<size_t>(bytes->size() * 2, kSmallPiece));
        if (!ReadFile(in, bytes->data() + length, static_cast<DWORD>(kSmallPiece), &count, nullptr) &&
            GetLastError() != ERROR_BROKEN_PIPE)
            return FailWithError(why);
        if (count == 0) {
            bytes->resize(length);
            return true;
        }
    }
}

std::wstring TemporaryPath(const std::wstring &path, uint32_t processId) {
    return path + L"." + std::to_wstring(processId) + L".tmp";
}

bool DoesFileExist(const std::wstring &path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

static bool IsStandardOutput(const std::wstring &path) {
    return path == kStandardStream;
}

static std::wstring StandardOutputTemporary() {
    std::wstring folder(MAX_PATH + 1, L'\0');
    folder.resize(GetTempPathW(static_cast<DWORD>(folder.size()), folder.data()));
    return folder + L"brillatrix-" + std::to_wstring(GetCurrentProcessId()) + L".tmp";
}

bool CheckOutputPlace(const std::wstring &path, std::string *why) {
    DWORD mode = 0;
    if (IsStandardOutput(path))
        return !GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) ||
               Fail(why, "it is a terminal; > FILE or a pipe takes the picture");
    const DWORD attributes = GetFileAttributesW(path.c_str());
    const bool isThere = attributes != INVALID_FILE_ATTRIBUTES;
    if (isThere && (attributes & FILE_ATTRIBUTE_DIRECTORY)) {
        *why = "it is a folder";
        return false;
    }
    if (isThere && (attributes & FILE_ATTRIBUTE_READONLY)) {
        *why = "it is write-protected";
        return false;
    }
    OutputFile file;
    if (!BeginOutput(path, &file, why))
        return false;
    DiscardOutput(&file);
    return true;
}

// The file that a link stands for, so that the link itself stays.
static std::wstring LinkTarget(const std::wstring &path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_REPARSE_POINT))
        return path;
    const HANDLE file = CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return path;
    std::wstring target(32768, L'\0');
    const DWORD length = GetFinalPathNameByHandleW(file, target.data(), static_cast<DWORD>(target.size()),
                                                   FILE_NAME_NORMALIZED);
    CloseHandle(file);
    target.resize(length < target.size() ? length : 0);
    return target.empty() ? path : target;
}

// Who may read and write the file that is replaced may do so with the new one.
static void CopyAccess(const std::wstring &from, const std::wstring &to) {
    DWORD needed = 0;
    GetFileSecurityW(from.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &needed);
    std::vector<uint8_t> rules(needed);
    if (needed > 0 &&
        GetFileSecurityW(from.c_str(), DACL_SECURITY_INFORMATION, rules.data(), needed, &needed))
        SetFileSecurityW(to.c_str(), DACL_SECURITY_INFORMATION, rules.data());
}

// A replaced file keeps its access rules, attributes and streams where the file system knows how.
static bool PutInPlace(const std::wstring &temporary, const std::wstring &path) {
    if (DoesFileExist(path) && IsUnderWine()) {
        if (PutUnixFile(temporary, path, path))
            return true;
    } else if (DoesFileExist(path)) {
        if (ReplaceFileW(path.c_str(), temporary.c_str(), nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr,
                         nullptr))
            return true;
        CopyAccess(path, temporary);
    }
    return MoveFileExW(temporary.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
}

void RemoveTemporary(const std::wstring &path, uint32_t processId) {
    DeleteFileW(TemporaryPath(LinkTarget(path), processId).c_str());
}

// --- What is not finished when the process must end at once.

struct Unfinished {
    std::wstring path;
    HANDLE handle;
};
static std::mutex gUnfinishedGuard;
static std::list<Unfinished> gUnfinished;

static void NoteUnfinished(const std::wstring &path, HANDLE handle) {
    const std::lock_guard<std::mutex> guard(gUnfinishedGuard);
    std::erase_if(gUnfinished, [&](const Unfinished &one) { return one.path == path; });
    gUnfinished.push_back({path, handle});
}

void NoteTemporary(const std::wstring &path) {
    NoteUnfinished(path, INVALID_HANDLE_VALUE);
}

void ForgetTemporary(const std::wstring &path) {
    const std::lock_guard<std::mutex> guard(gUnfinishedGuard);
    std::erase_if(gUnfinished, [&](const Unfinished &one) { return one.path == path; });
}

// A file that somebody else has open goes when that one notices the end too.
void RemoveTemporaries() {
    const ULONGLONG begun = GetTickCount64();
    for (bool isLeft = true; isLeft && GetTickCount64() - begun < kLongestTidying; Sleep(10)) {
        const std::lock_guard<std::mutex> guard(gUnfinishedGuard);
        isLeft = false;
        for (Unfinished &one : gUnfinished) {
            if (one.handle != INVALID_HANDLE_VALUE)
                CloseHandle(one.handle);
            one.handle = INVALID_HANDLE_VALUE;
            isLeft = isLeft || (!DeleteFileW(one.path.c_str()) && DoesFileExist(one.path));
        }
    }
}

bool BeginOutput(const std::wstring &path, OutputFile *file, std::string *why) {
    OutputFile begun;
    begun.path = IsStandardOutput(path) ? path : LinkTarget(path);
    begun.temporaryPath =
        IsStandardOutput(path) ? StandardOutputTemporary() : TemporaryPath(begun.path, GetCurrentProcessId());
    begun.handle = CreateFileW(begun.temporaryPath.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                               FILE_ATTRIBUTE_NORMAL, nullptr);
    if (begun.handle == INVALID_HANDLE_VALUE)
        return FailWithError(why);
    NoteUnfinished(begun.temporaryPath, begun.handle);
    *file = std::move(begun);
    return true;
}

static bool WriteAll(HANDLE handle, const void *bytes, size_t length, std::string *why) {
    const uint8_t *next = static_cast<const uint8_t *>(bytes);
    while (length > 0) {
        DWORD written = 0;
        const DWORD piece = static_cast<DWORD>(std::min(length, kLargestPiece));
        if (!WriteFile(handle, next, piece, &written, nullptr))
            return FailWithError(why);
        if (written == 0) {
            *why = "the disk is full";
            return false;
        }
        next += written;
        length -= written;
    }
    return true;
}

bool AppendOutput(OutputFile *file, const void *bytes, size_t length, std::string *why) {
    return WriteAll(file->handle, bytes, length, why);
}

static void CloseOutput(OutputFile *file) {
    if (file->handle != INVALID_HANDLE_VALUE)
        CloseHandle(file->handle);
    file->handle = INVALID_HANDLE_VALUE;
}

void LendOutput(OutputFile *file) {
    NoteTemporary(file->temporaryPath);
    CloseOutput(file);
}

bool TakeOutputBack(OutputFile *file, std::string *why) {
    file->handle = CreateFileW(file->temporaryPath.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                               FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file->handle == INVALID_HANDLE_VALUE)
        return FailWithError(why);
    NoteUnfinished(file->temporaryPath, file->handle);
    return true;
}

bool IsDiskFull(const std::wstring &path) {
    constexpr uint64_t kHardlyAny = 1u << 20;
    ULARGE_INTEGER free = {};
    const std::wstring folder = path.substr(0, path.find_last_of(L"\\/") + 1);
    return GetDiskFreeSpaceExW(folder.c_str(), &free, nullptr, nullptr) && free.QuadPart < kHardlyAny;
}

void DiscardOutput(OutputFile *file) {
    if (file->temporaryPath.empty())
        return;
    CloseOutput(file);
    DeleteFileW(file->temporaryPath.c_str());
    ForgetTemporary(file->temporaryPath);
    *file = {};
}

static bool SendToStandardOutput(const std::wstring &path, std::string *why) {
    Bytes bytes;
    return ReadWholeFile(path, &bytes, why) &&
           WriteAll(GetStdHandle(STD_OUTPUT_HANDLE), bytes.data(), bytes.size(), why);
}

bool CommitOutputFile(OutputFile *file, std::string *why) {
    const bool isFlushed = FlushFileBuffers(file->handle);
    if (!isFlushed)
        FailWithError(why);
    CloseOutput(file);
    const bool isStream = IsStandardOutput(file->path);
    const bool isMoved = isFlushed && (isStream ? SendToStandardOutput(file->temporaryPath, why)
                                                : PutInPlace(file->temporaryPath, file->path));
    if (isFlushed && !isMoved && !isStream)
        FailWithError(why);
    if (!isMoved || isStream)
        DeleteFileW(file->temporaryPath.c_str());
    ForgetTemporary(file->temporaryPath);
    *file = {};
    return isMoved;
}

bool WriteWholeFile(const std::wstring &path, const Bytes &bytes, std::string *why) {
    OutputFile file;
    if (!BeginOutput(path, &file, why))
        return false;
    if (!AppendOutput(&file, bytes.data(), bytes.size(), why)) {
        DiscardOutput(&file);
        return false;
    }
    return CommitOutputFile(&file, why);
}

std::wstring NativePath(const std::wstring &path) {
    if (IsStandardOutput(path))
        return path;
    std::wstring native = path;
    const bool isRooted = path.size() > 1 && path[0] == L'/' && path[1] != L'/';
    if (isRooted && IsUnderWine() && GetDriveTypeW(L"Z:\\") != DRIVE_NO_ROOT_DIR)
        native = L"Z:" + path;
    const DWORD needed = GetFullPathNameW(native.c_str(), 0, nullptr, nullptr);
    std::wstring full(needed, L'\0');
    const DWORD length = needed ? GetFullPathNameW(native.c_str(), needed, full.data(), nullptr) : 0;
    if (length == 0 || length >= needed)
        return native;
    full.resize(length);
    const bool isDrivePath = full.size() > 2 && full[1] == L':';
    return isDrivePath && full.size() >= MAX_PATH ? L"\\\\?\\" + full : full;
}

} // namespace host
