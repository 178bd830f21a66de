#include "tests/support/SystemObjects.h"

#include <cstdio>
#include <cstring>
#include <process.h>
#include <sstream>

namespace {

enum Kind { kPlain, kDrawing, kBorrowed }; // borrowed: a context of a window, which "any" leaves alone

struct Made {
    const char *call;
    int count; // GetDC may lend one context twice
    bool isDrawing;
};

// No mutex of the library: that makes system objects of its own.
SRWLOCK gBusy = SRWLOCK_INIT;
struct Busy {
    Busy() { AcquireSRWLockExclusive(&gBusy); }
    ~Busy() { ReleaseSRWLockExclusive(&gBusy); }
    Busy(const Busy &) = delete;
    Busy &operator=(const Busy &) = delete;
};
// Nothing gives windows back here, and in time the number of one that is gone becomes a drawing object's.
using Key = std::pair<void *, bool>; // whether it is a window
// Never freed: calls come until the very end of the program.
std::map<Key, Made> *gLive;
std::vector<RECT> *gInvalidations;
long gMadeCount;
const char *gFailing;
int gFailIn;
DWORD gFailError;

bool MustFail(const char *name, Kind kind = kPlain) {
    const Busy busy;
    if (gFailIn == 0 || (strcmp(gFailing, name) != 0 && (gFailing != kAnyDrawingCall || kind != kDrawing)) ||
        --gFailIn > 0)
        return false;
    SetLastError(gFailError);
    return true;
}

void Keep(void *handle, const char *call, Kind kind = kPlain) {
    if (!handle || handle == INVALID_HANDLE_VALUE)
        return;
    const Busy busy;
    Made &made = (*gLive)[{handle, strncmp(call, "CreateWindow", 12) == 0}];
    made = {call, made.count + 1, kind != kPlain};
    ++gMadeCount;
}

void Forget(void *handle) {
    const Busy busy;
    const auto found = gLive->find({handle, false});
    if (found != gLive->end() && --found->second.count <= 0)
        gLive->erase(found);
}

void NoteInvalid(const RECT &rect) {
    const Busy busy;
    gInvalidations->push_back(rect);
}

// What takes a call's place. `real` is what the module imported; the name itself would come back here in a
// program that watches itself.
template <auto function> struct Call;
template <typename Result, typename... Arguments, Result(WINAPI *function)(Arguments...)>
struct Call<function> {
    static inline const char *name; // never freed, as gLive
    static inline Kind kind = kPlain;
    static inline Result(WINAPI *real)(Arguments...) = nullptr;

    static Result WINAPI TryReal(Arguments... arguments) {
        return MustFail(name, kind) ? Result{} : real(arguments...);
    }
    static Result WINAPI Make(Arguments... arguments) {
        const Result result = TryReal(arguments...);
        Keep(reinterpret_cast<void *>(result), name, kind);
        return result;
    }
    // One argument, the handle; non-zero when it was given back.
    static Result WINAPI Give(Arguments... arguments) {
        const Result given = real(arguments...);
        if (given)
            (Forget(arguments), ...);
        else if (strcmp(name, "CloseHandle") == 0)
            (Keep(arguments, "closed twice"), ...);
        return given;
    }
};

struct Hooking {
    HMODULE module;
    host::ImportHooks *hooks;

    template <auto function, typename Replacement>
    void Replace(const std::string &name, Kind kind, Replacement replacement) const {
        Call<function>::name = (new std::string(name))->c_str();
        Call<function>::kind = kind;
        if (const auto real = host::ReplaceImport(module, name.c_str(), replacement, hooks))
            Call<function>::real = real;
    }
    // `names` are those of the functions, with commas between.
    template <auto... functions> void Make(std::istringstream names, Kind kind) const {
        (Replace<functions>(Next(&names), kind, Call<functions>::Make), ...);
    }
    template <auto... functions> void Give(std::istringstream names) const {
        (Replace<functions>(Next(&names), kPlain, Call<functions>::Give), ...);
    }
    template <auto... functions> void TryReal(std::istringstream names) const {
        (Replace<functions>(Next(&names), kPlain, Call<functions>::TryReal), ...);
    }
    static std::string Next(std::istringstream *names) {
        std::string name;
        std::getline(*names >> std::ws, name, ',');
        return name;
    }
};

// Functions with their names.
#define MAKES(kind, ...) hook.Make<__VA_ARGS__>(std::istringstream(#__VA_ARGS__), kind)
#define GIVES(...) hook.Give<__VA_ARGS__>(std::istringstream(#__VA_ARGS__))
#define MAY_FAIL(...) hook.TryReal<__VA_ARGS__>(std::istringstream(#__VA_ARGS__))

int WINAPI GiveContext(HWND window, HDC dc) {
    Forget(dc);
    return Call<ReleaseDC>::real(window, dc);
}

HDC WINAPI StartPaint(HWND window, PAINTSTRUCT *paint) {
    const HDC dc = Call<BeginPaint>::real(window, paint);
    Keep(dc, "BeginPaint", kBorrowed);
    return dc;
}

BOOL WINAPI StopPaint(HWND window, const PAINTSTRUCT *paint) {
    Forget(paint->hdc);
    return Call<EndPaint>::real(window, paint);
}

// A shared image belongs to the system.
template <auto function, typename Text>
HANDLE WINAPI LoadPicture(HINSTANCE module, Text name, UINT type, int width, int height, UINT flags) {
    if (flags & LR_SHARED)
        return Call<function>::real(module, name, type, width, height, flags);
    return Call<function>::Make(module, name, type, width, height, flags);
}

BOOL WINAPI IconParts(HICON icon, ICONINFO *parts) {
    const BOOL got = Call<GetIconInfo>::real(icon, parts);
    if (got) {
        Keep(parts->hbmColor, "GetIconInfo", kDrawing);
        Keep(parts->hbmMask, "GetIconInfo", kDrawing);
    }
    return got;
}

void *AtomKey(ATOM atom) {
    return reinterpret_cast<void *>(static_cast<uintptr_t>(atom));
}

ATOM WINAPI AddClass(const WNDCLASSEXA *windowClass) {
    const ATOM atom = Call<RegisterClassExA>::real(windowClass);
    Keep(AtomKey(atom), "RegisterClassExA");
    return atom;
}

BOOL WINAPI RemoveClass(LPCSTR name, HINSTANCE module) {
    WNDCLASSA windowClass;
    const auto atom = static_cast<ATOM>(GetClassInfoA(module, name, &windowClass));
    const BOOL removed = Call<UnregisterClassA>::real(name, module);
    if (removed)
        Forget(AtomKey(atom));
    return removed;
}

int CloseFile(FILE *file) {
    Forget(file);
    return Call<fclose>::real(file);
}

HGLOBAL WINAPI FreeBlock(HGLOBAL block) {
    const HGLOBAL kept = Call<GlobalFree>::real(block);
    if (!kept)
        Forget(block);
    return kept;
}

HANDLE WINAPI GiveToClipboard(UINT format, HANDLE block) {
    const HANDLE given = Call<SetClipboardData>::TryReal(format, block);
    if (given)
        Forget(block);
    return given;
}

// Stands for the one clipboard.
void *const kClipboard = &gFailIn;

BOOL WINAPI OpenTheClipboard(HWND owner) {
    const BOOL opened = Call<OpenClipboard>::TryReal(owner);
    Keep(opened ? kClipboard : nullptr, "OpenClipboard");
    return opened;
}

BOOL WINAPI CloseTheClipboard() {
    Forget(kClipboard);
    return Call<CloseClipboard>::real();
}

BOOL WINAPI Invalidate(HWND window, const RECT *rect, BOOL erase) {
    NoteInvalid(rect ? *rect : RECT{});
    return Call<InvalidateRect>::real(window, rect, erase);
}

BOOL WINAPI InvalidateRegion(HWND window, HRGN region, BOOL erase) {
    RECT box{};
    GetRgnBox(region, &box);
    NoteInvalid(box);
    return Call<InvalidateRgn>::real(window, region, erase);
}

void CountDrawingObjects(const Hooking &hook) {
    MAKES(kDrawing, CreateCompatibleDC, CreateCompatibleBitmap, CreateBitmap, CreateDIBSection,
          CreateSolidBrush, CreatePatternBrush, CreatePen, ExtCreatePen, CreateFontA, CreateFontW,
          CreateFontIndirectA, CreateFontIndirectW, CreateRectRgn, CreateRectRgnIndirect, ExtCreateRegion);
    MAKES(kBorrowed, GetDC, GetDCEx, GetWindowDC);
    GIVES(DeleteDC, DeleteObject);
    hook.Replace<ReleaseDC>("ReleaseDC", kPlain, GiveContext);
    hook.Replace<BeginPaint>("BeginPaint", kPlain, StartPaint);
    hook.Replace<EndPaint>("EndPaint", kPlain, StopPaint);
}

void CountPictures(const Hooking &hook) {
    MAKES(kDrawing, LoadBitmapA, LoadBitmapW);
    hook.Replace<LoadImageA>("LoadImageA", kDrawing, LoadPicture<LoadImageA, LPCSTR>);
    hook.Replace<LoadImageW>("LoadImageW", kDrawing, LoadPicture<LoadImageW, LPCWSTR>);
    MAKES(kDrawing, CopyImage, CopyIcon, CreateIconIndirect, CreateIconFromResourceEx);
    hook.Replace<GetIconInfo>("GetIconInfo", kPlain, IconParts);
    GIVES(DestroyIcon);
}

void CountWindowObjects(const Hooking &hook) {
    MAKES(kPlain, CreatePopupMenu, CreateMenu, LoadMenuA, LoadMenuW, CreateWindowExA, CreateWindowExW,
          SetWindowsHookExA, SetWindowsHookExW);
    GIVES(DestroyMenu, UnhookWindowsHookEx);
    hook.Replace<RegisterClassExA>("RegisterClassExA", kPlain, AddClass);
    hook.Replace<UnregisterClassA>("UnregisterClassA", kPlain, RemoveClass);
}

void CountHandles(const Hooking &hook) {
    MAKES(kPlain, fopen, _wfopen);
    hook.Replace<fclose>("fclose", kPlain, CloseFile);
    MAKES(kPlain, CreateEventA, CreateEventW, CreateMutexA, CreateMutexExW, CreateThread, _beginthreadex,
          CreateFileW, FindFirstFileW);
    GIVES(CloseHandle, FindClose);
}

void WatchClipboard(const Hooking &hook) {
    MAKES(kPlain, GlobalAlloc);
    hook.Replace<GlobalFree>("GlobalFree", kPlain, FreeBlock);
    MAY_FAIL(GlobalLock, GlobalSize);
    hook.Replace<OpenClipboard>("OpenClipboard", kPlain, OpenTheClipboard);
    MAY_FAIL(EmptyClipboard);
    hook.Replace<SetClipboardData>("SetClipboardData", kPlain, GiveToClipboard);
    hook.Replace<CloseClipboard>("CloseClipboard", kPlain, CloseTheClipboard);
}

void WatchRegions(const Hooking &hook) {
    MAY_FAIL(CombineRgn, SetRectRgn);
    hook.Replace<InvalidateRect>("InvalidateRect", kPlain, Invalidate);
    hook.Replace<InvalidateRgn>("InvalidateRgn", kPlain, InvalidateRegion);
}

} // namespace

void CountSystemObjects(HMODULE module, host::ImportHooks *hooks) {
    if (!gLive) {
        gLive = new std::map<Key, Made>;
        gInvalidations = new std::vector<RECT>;
    }
    gLive->clear();
    gInvalidations->clear();
    gMadeCount = 0;
    gFailIn = 0;
    const Hooking hook = {module, hooks};
    CountDrawingObjects(hook);
    CountPictures(hook);
    CountWindowObjects(hook);
    CountHandles(hook);
    WatchClipboard(hook);
    WatchRegions(hook);
}

bool CountOwnSystemObjects() {
    static auto *const hooks = new host::ImportHooks;
    CountSystemObjects(GetModuleHandleA(nullptr), hooks);
    return true;
}

// The system destroys child windows with their parents.
std::map<std::string, int> LiveObjects() {
    const Busy busy;
    std::erase_if(*gLive, [](const auto &object) {
        return object.first.second && !IsWindow(static_cast<HWND>(object.first.first));
    });
    std::map<std::string, int> live;
    for (const auto &[key, made] : *gLive)
        live[made.call] += made.count;
    return live;
}

int LiveDrawingObjects() {
    const Busy busy;
    int live = 0;
    for (const auto &[key, made] : *gLive)
        live += made.isDrawing ? made.count : 0;
    return live;
}

long ObjectsMade() {
    const Busy busy;
    return gMadeCount;
}

void FailSystemCall(const char *name, int n, DWORD error) {
    const Busy busy;
    gFailing = name;
    gFailIn = n;
    gFailError = error;
}

std::vector<RECT> TakeInvalidations() {
    std::vector<RECT> taken;
    const Busy busy;
    taken.swap(*gInvalidations);
    return taken;
}
