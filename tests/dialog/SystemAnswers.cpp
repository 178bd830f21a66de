#include "tests/dialog/SystemAnswers.h"

#include <atomic>
#include <commctrl.h>
#include <commdlg.h>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <mutex>
#include <shellapi.h>
#include <tlhelp32.h>

SystemAnswers gAnswers;

namespace {

// --- Objects
// ------------------------------------------------------------------------------------------------

struct Made {
    const char *call;
    int count; // GetDC may lend one context twice
};
std::mutex gBusy;
std::map<void *, Made> gMade;
std::atomic<long> gMadeCount;

void Keep(void *handle, const char *call) {
    if (!handle)
        return;
    const std::lock_guard lock(gBusy);
    Made &made = gMade[handle];
    made = {call, made.count + 1};
    ++gMadeCount;
}

void Forget(void *handle) {
    const std::lock_guard lock(gBusy);
    const auto found = gMade.find(handle);
    if (found != gMade.end() && --found->second.count <= 0)
        gMade.erase(found);
}

// Calls the system and keeps or forgets the handle; `name` only tells kinds apart.
template <auto function> struct Maker;
template <typename Result, typename... Arguments, Result(WINAPI *function)(Arguments...)>
struct Maker<function> {
    static inline const char *name;
    static Result WINAPI Call(Arguments... arguments) {
        const Result result = function(arguments...);
        Keep(reinterpret_cast<void *>(result), name);
        return result;
    }
};

template <auto function> struct Giver;
template <typename Handle, BOOL(WINAPI *function)(Handle)> struct Giver<function> {
    static BOOL WINAPI Call(Handle handle) {
        const BOOL given = function(handle);
        if (given)
            Forget(handle);
        return given;
    }
};

int WINAPI GiveContext(HWND window, HDC dc) {
    Forget(dc);
    return ReleaseDC(window, dc);
}

HDC WINAPI StartPaint(HWND window, PAINTSTRUCT *paint) {
    const HDC dc = BeginPaint(window, paint);
    Keep(dc, "BeginPaint");
    return dc;
}

BOOL WINAPI StopPaint(HWND window, const PAINTSTRUCT *paint) {
    Forget(paint->hdc);
    return EndPaint(window, paint);
}

// A shared image belongs to the system.
HANDLE WINAPI LoadPictureW(HINSTANCE module, LPCWSTR name, UINT type, int width, int height, UINT flags) {
    const HANDLE image = LoadImageW(module, name, type, width, height, flags);
    Keep(flags & LR_SHARED ? nullptr : image, "LoadImage");
    return image;
}

HANDLE WINAPI LoadPictureA(HINSTANCE module, LPCSTR name, UINT type, int width, int height, UINT flags) {
    const HANDLE image = LoadImageA(module, name, type, width, height, flags);
    Keep(flags & LR_SHARED ? nullptr : image, "LoadImage");
    return image;
}

BOOL WINAPI IconParts(HICON icon, ICONINFO *parts) {
    const BOOL got = GetIconInfo(icon, parts);
    if (got) {
        Keep(parts->hbmColor, "GetIconInfo");
        Keep(parts->hbmMask, "GetIconInfo");
    }
    return got;
}

ATOM WINAPI AddClassA(const WNDCLASSEXA *windowClass) {
    const ATOM atom = RegisterClassExA(windowClass);
    Keep(reinterpret_cast<void *>(static_cast<uintptr_t>(atom)), "RegisterClassEx");
    return atom;
}

BOOL WINAPI RemoveClassA(LPCSTR name, HINSTANCE module) {
    WNDCLASSA windowClass;
    const auto atom = static_cast<ATOM>(GetClassInfoA(module, name, &windowClass));
    const BOOL removed = UnregisterClassA(name, module);
    if (removed)
        Forget(reinterpret_cast<void *>(static_cast<uintptr_t>(atom)));
    return removed;
}

FILE *OpenNarrow(const char *name, const char *mode) {
    FILE *file = fopen(name, mode);
    Keep(file, "fopen");
    return file;
}

FILE *OpenWide(const wchar_t *name, const wchar_t *mode) {
    FILE *file = _wfopen(name, mode);
    Keep(file, "fopen");
    return file;
}

int CloseFile(FILE *file) {
    Forget(file);
    return fclose(file);
}

struct Hooking {
    HMODULE module;
    host::ImportHooks *hooks;
    template <typename Function> void operator()(const char *name, Function function) const {
        host::ReplaceImport(module, nullptr, name, function, hooks);
    }
    template <auto function> void Makes(const char *name) const {
        Maker<function>::name = name;
        (*this)(name, Maker<function>::Call);
    }
    template <auto function> void Gives(const char *name) const { (*this)(name, Giver<function>::Call); }
};

void CountDrawingObjects(const Hooking &hook) {
    hook.Makes<CreateCompatibleDC>("CreateCompatibleDC");
    hook.Makes<CreateCompatibleBitmap>("CreateCompatibleBitmap");
    hook.Makes<CreateBitmap>("CreateBitmap");
    hook.Makes<CreateDIBSection>("CreateDIBSection");
    hook.Makes<CreateSolidBrush>("CreateSolidBrush");
    hook.Makes<CreatePatternBrush>("CreatePatternBrush");
    hook.Makes<CreatePen>("CreatePen");
    hook.Makes<ExtCreatePen>("ExtCreatePen");
    hook.Makes<CreateFontA>("CreateFontA");
    hook.Makes<CreateFontW>("CreateFontW");
    hook.Makes<CreateFontIndirectA>("CreateFontIndirectA");
    hook.Makes<CreateFontIndirectW>("CreateFontIndirectW");
    hook.Makes<CreateRectRgn>("CreateRectRgn");
    hook.Makes<CreateRectRgnIndirect>("CreateRectRgnIndirect");
    hook.Makes<ExtCreateRegion>("ExtCreateRegion");
    hook.Makes<GetDC>("GetDC");
    hook.Makes<GetDCEx>("GetDCEx");
    hook.Makes<GetWindowDC>("GetWindowDC");
    hook.Gives<DeleteDC>("DeleteDC");
    hook.Gives<DeleteObject>("DeleteObject");
    hook("ReleaseDC", GiveContext);
    hook("BeginPaint", StartPaint);
    hook("EndPaint", StopPaint);
}

void CountWindowObjects(const Hooking &hook) {
    hook.Makes<LoadBitmapA>("LoadBitmapA");
    hook.Makes<LoadBitmapW>("LoadBitmapW");
    hook.Makes<CopyImage>("CopyImage");
    hook.Makes<CopyIcon>("CopyIcon");
    hook.Makes<CreateIconIndirect>("CreateIconIndirect");
    hook.Makes<CreateIconFromResourceEx>("CreateIconFromResourceEx");
    hook.Makes<CreatePopupMenu>("CreatePopupMenu");
    hook.Makes<CreateMenu>("CreateMenu");
    hook.Makes<LoadMenuA>("LoadMenuA");
    hook.Makes<LoadMenuW>("LoadMenuW");
    hook.Makes<CreateWindowExA>("CreateWindowExA");
    hook.Makes<CreateWindowExW>("CreateWindowExW");
    hook.Makes<SetWindowsHookExA>("SetWindowsHookExA");
    hook.Makes<SetWindowsHookExW>("SetWindowsHookExW");
    hook.Gives<DestroyIcon>("DestroyIcon");
    hook.Gives<DestroyMenu>("DestroyMenu");
    hook.Gives<UnhookWindowsHookEx>("UnhookWindowsHookEx");
    hook("fopen", OpenNarrow);
    hook("_wfopen", OpenWide);
    hook("fclose", CloseFile);
    hook("LoadImageA", LoadPictureA);
    hook("LoadImageW", LoadPictureW);
    hook("GetIconInfo", IconParts);
    hook("RegisterClassExA", AddClassA);
    hook("UnregisterClassA", RemoveClassA);
}

// --- Answers
// ------------------------------------------------------------------------------------------------

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
    return reinterpret_cast<HINSTANCE>(static_cast<INT_PTR>(33));
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
    gMade.clear();
    gMadeCount = 0;
    const Hooking hook = {module, hooks};
    CountDrawingObjects(hook);
    CountWindowObjects(hook);
    hook("TrackPopupMenu", OfferMenu);
    hook("TrackPopupMenuEx", OfferMenuEx);
    hook("GetOpenFileNameW", PickFile);
    hook("GetSaveFileNameW", PickFile);
    hook("ShellExecuteA", OpenA);
    hook("ShellExecuteW", OpenW);
    hook("MessageBeep", CountBeep);
}

std::map<std::string, int> LiveObjects() {
    const std::lock_guard lock(gBusy);
    std::map<std::string, int> live;
    for (const auto &[handle, made] : gMade)
        if (strncmp(made.call, "CreateWindow", 12) != 0 || IsWindow(static_cast<HWND>(handle)))
            live[made.call] += made.count;
    return live;
}

long ObjectsMade() {
    return gMadeCount;
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
