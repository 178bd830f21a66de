#include "tests/dialog/SystemAnswers.h"

#include <commdlg.h>
#include <cwchar>
#include <shellapi.h>
#include <tlhelp32.h>

SystemAnswers gAnswers;

namespace {

BOOL WINAPI OfferMenuEx(HMENU menu, UINT flags, int x, int y, HWND owner, TPMPARAMS *) {
    OfferedMenu offered = {{x, y}, flags, owner, {}};
    for (int i = 0; i < GetMenuItemCount(menu); ++i) {
        wchar_t text[100] = L"";
        const UINT place = static_cast<UINT>(i), state = GetMenuState(menu, place, MF_BYPOSITION);
        GetMenuStringW(menu, place, text, 100, MF_BYPOSITION);
        if (GetMenuItemID(menu, i) != 0)
            offered.items[static_cast<int>(GetMenuItemID(menu, i))] = {
                text, (state & (MF_GRAYED | MF_DISABLED)) != 0};
    }
    gAnswers.menus.push_back(offered);
    SetLastError(gAnswers.menuError);
    return gAnswers.menuCommand;
}

BOOL WINAPI OfferMenu(HMENU menu, UINT flags, int x, int y, int, HWND owner, const RECT *) {
    return OfferMenuEx(menu, flags, x, y, owner, nullptr);
}

BOOL WINAPI PickFile(OPENFILENAMEW *request) {
    std::string title;
    for (const wchar_t *at = request->lpstrTitle; at && *at; ++at)
        title += static_cast<char>(*at);
    gAnswers.fileTitles.push_back(title);
    if (gAnswers.file.empty() || gAnswers.file.size() >= request->nMaxFile)
        return FALSE;
    wcscpy(request->lpstrFile, gAnswers.file.c_str());
    return TRUE;
}

HINSTANCE ShellAnswer() {
    return reinterpret_cast<HINSTANCE>(gAnswers.shellAnswer);
}

HINSTANCE WINAPI OpenA(HWND, LPCSTR verb, LPCSTR file, LPCSTR, LPCSTR, int) {
    gAnswers.opened.push_back(std::string(verb ? verb : "") + " " + file);
    return ShellAnswer();
}

HINSTANCE WINAPI OpenW(HWND window, LPCWSTR verb, LPCWSTR file, LPCWSTR, LPCWSTR, int show) {
    char narrowVerb[50] = "", narrowFile[500] = "";
    WideCharToMultiByte(CP_ACP, 0, verb ? verb : L"", -1, narrowVerb, 50, nullptr, nullptr);
    WideCharToMultiByte(CP_ACP, 0, file, -1, narrowFile, 500, nullptr, nullptr);
    return OpenA(window, narrowVerb, narrowFile, nullptr, nullptr, show);
}

BOOL WINAPI CountBeep(UINT) {
    ++gAnswers.beeps;
    return TRUE;
}

} // namespace

void AnswerForSystem(HMODULE module, host::ImportHooks *hooks) {
    gAnswers = {};
    const auto hook = [&](const char *name, auto function) {
        host::ReplaceImport(module, nullptr, name, function, hooks);
    };
    hook("TrackPopupMenu", OfferMenu);
    hook("TrackPopupMenuEx", OfferMenuEx);
    hook("GetOpenFileNameW", PickFile);
    hook("GetSaveFileNameW", PickFile);
    hook("ShellExecuteA", OpenA);
    hook("ShellExecuteW", OpenW);
    hook("MessageBeep", CountBeep);
}

// Wine keeps no count; there the process's own table of drawing objects is read, whose free entries have no
// type.
int ProcessDrawingObjects() {
    if (const DWORD known = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS))
        return static_cast<int>(known);
    struct Entry {
        uint64_t object;
        uint32_t owner;
        uint16_t unique;
        uint8_t type, flags;
        uint64_t user;
    };
    constexpr size_t tableOffset = 0xF8, entries = 0x10000;
    const FARPROC found = GetProcAddress(GetModuleHandleA("ntdll.dll"), "RtlGetCurrentPeb");
    if (!found)
        return -1;
    const char *processBlock = reinterpret_cast<const char *(WINAPI *)()>(reinterpret_cast<void *>(found))();
    const auto *table = *reinterpret_cast<const Entry *const *>(processBlock + tableOffset);
    int used = table ? 0 : -1;
    for (size_t i = 0; table && i < entries; ++i)
        used += table[i].type != 0;
    return used;
}

int ProcessThreads() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    int count = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry))
        count += entry.th32OwnerProcessID == GetCurrentProcessId();
    CloseHandle(snapshot);
    return count;
}
