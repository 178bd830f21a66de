#include "tests/storage/SystemCalls.h"

#include <cstring>
#include <cwchar>
#include <shlobj.h>

ShellFolders gShellFolders = {"", "", E_FAIL, -1};

namespace {

std::vector<ShownBox> gBoxes;
std::vector<int> gShellFolderCalls;
std::string gFailing;
DWORD gFailError = 0;

bool MustFail(const char *name) {
    if (gFailing != name)
        return false;
    gFailing.clear();
    SetLastError(gFailError);
    return true;
}

template <typename Function> Function *Real(const char *module, const char *name) {
    const FARPROC address = GetProcAddress(LoadLibraryA(module), name);
    Function *function;
    static_assert(sizeof function == sizeof address);
    memcpy(&function, &address, sizeof function);
    return function;
}

int WINAPI KeepMessageBox(HWND owner, LPCSTR text, LPCSTR title, UINT flags) {
    gBoxes.push_back({owner, text, title, flags});
    return IDOK;
}

BOOL WINAPI InitSection(LPCRITICAL_SECTION section, DWORD spinCount) {
    static const auto real =
        Real<decltype(InitSection)>("kernel32.dll", "InitializeCriticalSectionAndSpinCount");
    return MustFail("InitializeCriticalSectionAndSpinCount") ? FALSE : real(section, spinCount);
}

HANDLE WINAPI OpenOrCreate(LPCSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                           DWORD disposition, DWORD attributes, HANDLE model) {
    static const auto real = Real<decltype(OpenOrCreate)>("kernel32.dll", "CreateFileA");
    return MustFail("CreateFile") ? INVALID_HANDLE_VALUE
                                  : real(path, access, share, security, disposition, attributes, model);
}

HANDLE WINAPI OpenOrCreateWide(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                               DWORD disposition, DWORD attributes, HANDLE model) {
    static const auto real = Real<decltype(OpenOrCreateWide)>("kernel32.dll", "CreateFileW");
    return MustFail("CreateFile") ? INVALID_HANDLE_VALUE
                                  : real(path, access, share, security, disposition, attributes, model);
}

BOOL WINAPI Write(HANDLE file, LPCVOID data, DWORD size, LPDWORD written, LPOVERLAPPED overlapped) {
    static const auto real = Real<decltype(Write)>("kernel32.dll", "WriteFile");
    if (MustFail("WriteFile"))
        return FALSE;
    return real(file, data, MustFail("WriteFile:short") ? size / 2 : size, written, overlapped);
}

BOOL WINAPI Flush(HANDLE file) {
    static const auto real = Real<decltype(Flush)>("kernel32.dll", "FlushFileBuffers");
    return MustFail("FlushFileBuffers") ? FALSE : real(file);
}

// A failing close closes all the same, as it does when a network drive reports a late write error.
BOOL WINAPI Close(HANDLE handle) {
    static const auto real = Real<decltype(Close)>("kernel32.dll", "CloseHandle");
    if (gFailing != "CloseHandle")
        return real(handle);
    real(handle);
    return !MustFail("CloseHandle");
}

BOOL WINAPI Move(LPCWSTR from, LPCWSTR to, DWORD flags) {
    static const auto real = Real<decltype(Move)>("kernel32.dll", "MoveFileExW");
    return MustFail("MoveFileEx") ? FALSE : real(from, to, flags);
}

HRESULT WINAPI FolderPath(HWND, int folder, HANDLE, DWORD, LPSTR path) {
    gShellFolderCalls.push_back(folder);
    const std::string &root =
        (folder & 0xFF) == CSIDL_LOCAL_APPDATA ? gShellFolders.localData : gShellFolders.commonData;
    if (root.empty()) {
        SetLastError(ERROR_ACCESS_DENIED);
        return gShellFolders.result;
    }
    strcpy(path, root.c_str());
    return S_OK;
}

HRESULT WINAPI FolderPathWide(HWND, int folder, HANDLE, DWORD, LPWSTR path) {
    const bool isLocal = (folder & 0xFF) == CSIDL_LOCAL_APPDATA;
    const std::string &root = isLocal ? gShellFolders.localData : gShellFolders.commonData;
    if (isLocal && !gShellFolders.wideLocalData.empty())
        wcscpy(path, gShellFolders.wideLocalData.c_str());
    else if (!root.empty())
        MultiByteToWideChar(CP_ACP, 0, root.c_str(), -1, path, MAX_PATH);
    else
        return gShellFolders.result;
    return S_OK;
}

int WINAPI CreateFolders(HWND window, LPCSTR path, const SECURITY_ATTRIBUTES *security) {
    static const auto real = Real<decltype(CreateFolders)>("shell32.dll", "SHCreateDirectoryExA");
    if (gShellFolders.createResult < 0)
        return real(window, path, security);
    SetLastError(0x1F);
    return gShellFolders.createResult;
}

} // namespace

// The linker takes an import's address from here instead of from the import library.
extern "C" {
decltype(&KeepMessageBox) __imp_MessageBoxA = KeepMessageBox;
decltype(&InitSection) __imp_InitializeCriticalSectionAndSpinCount = InitSection;
decltype(&OpenOrCreate) __imp_CreateFileA = OpenOrCreate;
decltype(&OpenOrCreateWide) __imp_CreateFileW = OpenOrCreateWide;
decltype(&Write) __imp_WriteFile = Write;
decltype(&Flush) __imp_FlushFileBuffers = Flush;
decltype(&Close) __imp_CloseHandle = Close;
decltype(&Move) __imp_MoveFileExW = Move;
decltype(&FolderPath) __imp_SHGetFolderPathA = FolderPath;
decltype(&FolderPathWide) __imp_SHGetFolderPathW = FolderPathWide;
decltype(&CreateFolders) __imp_SHCreateDirectoryExA = CreateFolders;
}

std::vector<ShownBox> TakeBoxes() {
    std::vector<ShownBox> taken;
    taken.swap(gBoxes);
    return taken;
}

void FailNextCall(const std::string &name, DWORD error) {
    gFailing = name;
    gFailError = error;
}

bool FailureHappened() {
    return gFailing.empty();
}

std::vector<int> TakeShellFolderCalls() {
    std::vector<int> taken;
    taken.swap(gShellFolderCalls);
    return taken;
}
