#include "host/base/UnixFile.h"

#include "host/base/CommandLine.h"
#include "host/base/SystemText.h"

#include <windows.h>

#include <cstring>

namespace host {

constexpr DWORD kLongestMove = 3000; // milliseconds

// mv is not run when the permissions cannot be had: then the file would be open to others than before.
static constexpr wchar_t kMove[] = L"chmod --reference=\"$3\" \"$2\" && mv -f \"$2\" \"$1\"";

// Empty when Wine does not tell.
static std::wstring UnixPath(const std::wstring &path) {
    using TellPath = char *(*)(LPCWSTR);
    TellPath tell = nullptr;
    const FARPROC found = GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name");
    std::memcpy(&tell, &found, sizeof(tell));
    char *text = tell ? tell(path.c_str()) : nullptr;
    std::wstring told = text ? FromUtf8(text) : L"";
    if (text)
        HeapFree(GetProcessHeap(), 0, text);
    return told;
}

static bool StartShell(const std::vector<std::wstring> &words) {
    std::wstring line = JoinWords(words);
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(L"\\\\?\\unix\\bin\\sh", line.data(), nullptr, nullptr, FALSE, DETACHED_PROCESS,
                        nullptr, nullptr, &startup, &process))
        return false;
    for (const HANDLE handle : {process.hProcess, process.hThread})
        if (handle)
            CloseHandle(handle);
    return true;
}

// Wine hands out nothing to wait on for a program of the system below it: the file's going is what tells.
bool PutUnixFile(const std::wstring &temporary, const std::wstring &path, const std::wstring &model) {
    const std::wstring from = UnixPath(temporary), to = UnixPath(path), like = UnixPath(model);
    if (from.empty() || to.empty() || like.empty() ||
        !StartShell({L"sh", L"-c", kMove, L"sh", to, from, like}))
        return false;
    const ULONGLONG begun = GetTickCount64();
    while (GetFileAttributesW(temporary.c_str()) != INVALID_FILE_ATTRIBUTES) {
        if (GetTickCount64() - begun > kLongestMove)
            return false;
        Sleep(1);
    }
    return true;
}

} // namespace host
