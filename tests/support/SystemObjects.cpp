#include "tests/support/SystemObjects.h"

#include <cstdio>
#include <cstring>
#include <process.h>

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
// Never freed: calls come until the very end of the program.
std::map<void *, Made> *gLive;
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
    if (!handle)
        return;
    const Busy busy;
    Made &made = (*gLive)[handle];
    made = {call, made.count + 1, kind != kPlain};
    ++gMadeCount;
}

void Forget(void *handle) {
    const Busy busy;
    const auto found = gLive->find(handle);
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
    static inline const char *name;
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
        else if (name == std::string("CloseHandle"))
            (Keep(arguments, "closed twice"), ...);
        return given;
    }
};

struct Hooking {
    HMODULE module;
    host::ImportHooks *hooks;

    template <auto function, typename Replacement>
    void Replace(const char *name, Kind kind, Replacement replacement) const {
        Call<function>::name = name;
        Call<function>::kind = kind;
        if (const auto real = host::ReplaceImport(module, nullptr, name, replacement, hooks))
            Call<function>::real = real;
    }
    template <auto function> void Makes(const char *name, Kind kind = kPlain) const {
        Replace<function>(name, kind, Call<function>::Make);
    }
    template <auto function> void Gives(const char *name) const {
        Replace<function>(name, kPlain, Call<function>::Give);
    }
    template <auto function> void MayFail(const char *name) const {
        Replace<function>(name, kPlain, Call<function>::TryReal);
    }
};

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
    hook.Makes<CreateCompatibleDC>("CreateCompatibleDC", kDrawing);
    hook.Makes<CreateCompatibleBitmap>("CreateCompatibleBitmap", kDrawing);
    hook.Makes<CreateBitmap>("CreateBitmap", kDrawing);
    hook.Makes<CreateDIBSection>("CreateDIBSection", kDrawing);
    hook.Makes<CreateSolidBrush>("CreateSolidBrush", kDrawing);
    hook.Makes<CreatePatternBrush>("CreatePatternBrush", kDrawing);
    hook.Makes<CreatePen>("CreatePen", kDrawing);
    hook.Makes<ExtCreatePen>("ExtCreatePen", kDrawing);
    hook.Makes<CreateFontA>("CreateFontA", kDrawing);
    hook.Makes<CreateFontW>("CreateFontW", kDrawing);
    hook.Makes<CreateFontIndirectA>("CreateFontIndirectA", kDrawing);
    hook.Makes<CreateFontIndirectW>("CreateFontIndirectW", kDrawing);
    hook.Makes<CreateRectRgn>("CreateRectRgn", kDrawing);
    hook.Makes<CreateRectRgnIndirect>("CreateRectRgnIndirect", kDrawing);
    hook.Makes<ExtCreateRegion>("ExtCreateRegion", kDrawing);
    hook.Makes<GetDC>("GetDC", kBorrowed);
    hook.Makes<GetDCEx>("GetDCEx", kBorrowed);
    hook.Makes<GetWindowDC>("GetWindowDC", kBorrowed);
    hook.Gives<DeleteDC>("DeleteDC");
    hook.Gives<DeleteObject>("DeleteObject");
    hook.Replace<ReleaseDC>("ReleaseDC", kPlain, GiveContext);
    hook.Replace<BeginPaint>("BeginPaint", kPlain, StartPaint);
    hook.Replace<EndPaint>("EndPaint", kPlain, StopPaint);
}

void CountPictures(const Hooking &hook) {
    hook.Makes<LoadBitmapA>("LoadBitmapA", kDrawing);
    hook.Makes<LoadBitmapW>("LoadBitmapW", kDrawing);
    hook.Replace<LoadImageA>("LoadImageA", kDrawing, LoadPicture<LoadImageA, LPCSTR>);
    hook.Replace<LoadImageW>("LoadImageW", kDrawing, LoadPicture<LoadImageW, LPCWSTR>);
    hook.Makes<CopyImage>("CopyImage", kDrawing);
    hook.Makes<CopyIcon>("CopyIcon", kDrawing);
    hook.Makes<CreateIconIndirect>("CreateIconIndirect", kDrawing);
    hook.Makes<CreateIconFromResourceEx>("CreateIconFromResourceEx", kDrawing);
    hook.Replace<GetIconInfo>("GetIconInfo", kPlain, IconParts);
    hook.Gives<DestroyIcon>("DestroyIcon");
}

void CountWindowObjects(const Hooking &hook) {
    hook.Makes<CreatePopupMenu>("CreatePopupMenu");
    hook.Makes<CreateMenu>("CreateMenu");
    hook.Makes<LoadMenuA>("LoadMenuA");
    hook.Makes<LoadMenuW>("LoadMenuW");
    hook.Makes<CreateWindowExA>("CreateWindowExA");
    hook.Makes<CreateWindowExW>("CreateWindowExW");
    hook.Makes<SetWindowsHookExA>("SetWindowsHookExA");
    hook.Makes<SetWindowsHookExW>("SetWindowsHookExW");
    hook.Gives<DestroyMenu>("DestroyMenu");
    hook.Gives<UnhookWindowsHookEx>("UnhookWindowsHookEx");
    hook.Replace<RegisterClassExA>("RegisterClassExA", kPlain, AddClass);
    hook.Replace<UnregisterClassA>("UnregisterClassA", kPlain, RemoveClass);
}

void CountHandles(const Hooking &hook) {
    hook.Makes<fopen>("fopen");
    hook.Makes<_wfopen>("_wfopen");
    hook.Replace<fclose>("fclose", kPlain, CloseFile);
    hook.Makes<CreateEventA>("CreateEventA");
    hook.Makes<CreateMutexA>("CreateMutexA");
    hook.Makes<CreateMutexExW>("CreateMutexExW");
    hook.Makes<_beginthreadex>("_beginthreadex");
    hook.Gives<CloseHandle>("CloseHandle");
}

void WatchClipboard(const Hooking &hook) {
    hook.Makes<GlobalAlloc>("GlobalAlloc");
    hook.Replace<GlobalFree>("GlobalFree", kPlain, FreeBlock);
    hook.MayFail<GlobalLock>("GlobalLock");
    hook.MayFail<GlobalSize>("GlobalSize");
    hook.Replace<OpenClipboard>("OpenClipboard", kPlain, OpenTheClipboard);
    hook.MayFail<EmptyClipboard>("EmptyClipboard");
    hook.Replace<SetClipboardData>("SetClipboardData", kPlain, GiveToClipboard);
    hook.Replace<CloseClipboard>("CloseClipboard", kPlain, CloseTheClipboard);
}

void WatchRegions(const Hooking &hook) {
    hook.MayFail<CombineRgn>("CombineRgn");
    hook.MayFail<SetRectRgn>("SetRectRgn");
    hook.Replace<InvalidateRect>("InvalidateRect", kPlain, Invalidate);
    hook.Replace<InvalidateRgn>("InvalidateRgn", kPlain, InvalidateRegion);
}

} // namespace

void CountSystemObjects(HMODULE module, host::ImportHooks *hooks) {
    if (!gLive) {
        gLive = new std::map<void *, Made>;
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
    std::map<std::string, int> live;
    for (const auto &[handle, made] : *gLive)
        if (strncmp(made.call, "CreateWindow", 12) != 0 || IsWindow(static_cast<HWND>(handle)))
            live[made.call] += made.count;
    return live;
}

int LiveDrawingObjects() {
    const Busy busy;
    int live = 0;
    for (const auto &[handle, made] : *gLive)
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
