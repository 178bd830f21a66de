#include "tests/preview/SystemObjects.h"

#include <atomic>
#include <cstring>
#include <map>
#include <process.h>

namespace {

// No mutex of the library: those may make system objects of their own.
std::atomic_flag gBusy = ATOMIC_FLAG_INIT;
struct Busy {
    Busy() {
        while (gBusy.test_and_set())
            SwitchToThread();
    }
    ~Busy() { gBusy.clear(); }
    Busy(const Busy &) = delete;
    Busy &operator=(const Busy &) = delete;
};

// Made when first needed: the library makes objects before the variables of this file are set up.
std::map<void *, const char *> &Live() {
    static std::map<void *, const char *> *live;
    if (!live)
        live = new std::map<void *, const char *>;
    return *live;
}
std::vector<RECT> gInvalidations;
const char *gFailing = nullptr;
int gFailIn = 0;
DWORD gFailError = 0;
long gMade = 0;

// Without initialised statics: their guards make system objects themselves.
template <typename Function> void Find(Function *real, const char *module, const char *name) {
    if (*real)
        return;
    const FARPROC address = GetProcAddress(GetModuleHandleA(module), name);
    static_assert(sizeof *real == sizeof address);
    memcpy(real, &address, sizeof *real);
}

bool MustFail(const char *name) {
    const Busy busy;
    if (!gFailing || strcmp(gFailing, name) != 0 || --gFailIn > 0)
        return false;
    gFailing = nullptr;
    SetLastError(gFailError);
    return true;
}

template <typename Handle> Handle Keep(const char *name, Handle handle) {
    const Busy busy;
    if (handle) {
        Live()[reinterpret_cast<void *>(handle)] = name;
        ++gMade;
    }
    return handle;
}

void Forget(void *handle) {
    const Busy busy;
    Live().erase(handle);
}

HANDLE WINAPI MakeEvent(LPSECURITY_ATTRIBUTES security, BOOL manual, BOOL initial, LPCSTR name) {
    static decltype(&MakeEvent) real;
    Find(&real, "kernel32.dll", "CreateEventA");
    return MustFail("CreateEvent") ? nullptr : Keep("CreateEvent", real(security, manual, initial, name));
}

HANDLE WINAPI MakeMutex(LPSECURITY_ATTRIBUTES security, BOOL owner, LPCSTR name) {
    static decltype(&MakeMutex) real;
    Find(&real, "kernel32.dll", "CreateMutexA");
    return MustFail("CreateMutex") ? nullptr : Keep("CreateMutex", real(security, owner, name));
}

BOOL WINAPI Close(HANDLE handle) {
    static decltype(&Close) real;
    Find(&real, "kernel32.dll", "CloseHandle");
    Forget(handle);
    return real(handle);
}

uintptr_t __cdecl MakeThread(void *security, unsigned stack, unsigned(__stdcall *body)(void *),
                             void *argument, unsigned flags, unsigned *id) {
    static decltype(&MakeThread) real;
    Find(&real, "msvcrt.dll", "_beginthreadex");
    return MustFail("_beginthreadex")
               ? 0
               : Keep("_beginthreadex", real(security, stack, body, argument, flags, id));
}

HRGN WINAPI MakeRegion(int left, int top, int right, int bottom) {
    static decltype(&MakeRegion) real;
    Find(&real, "gdi32.dll", "CreateRectRgn");
    return MustFail("CreateRectRgn") ? nullptr : Keep("CreateRectRgn", real(left, top, right, bottom));
}

HRGN WINAPI MakeRegionFromData(const XFORM *form, DWORD bytes, const RGNDATA *data) {
    static decltype(&MakeRegionFromData) real;
    Find(&real, "gdi32.dll", "ExtCreateRegion");
    return MustFail("ExtCreateRegion") ? nullptr : Keep("ExtCreateRegion", real(form, bytes, data));
}

int WINAPI Combine(HRGN region, HRGN a, HRGN b, int mode) {
    static decltype(&Combine) real;
    Find(&real, "gdi32.dll", "CombineRgn");
    return MustFail("CombineRgn") ? ERROR : real(region, a, b, mode);
}

BOOL WINAPI ReplaceByRect(HRGN region, int left, int top, int right, int bottom) {
    static decltype(&ReplaceByRect) real;
    Find(&real, "gdi32.dll", "SetRectRgn");
    return MustFail("SetRectRgn") ? FALSE : real(region, left, top, right, bottom);
}

HDC WINAPI MakeContext(HDC dc) {
    static decltype(&MakeContext) real;
    Find(&real, "gdi32.dll", "CreateCompatibleDC");
    return MustFail("CreateCompatibleDC") ? nullptr : Keep("CreateCompatibleDC", real(dc));
}

HBITMAP WINAPI MakeBitmap(HDC dc, int width, int height) {
    static decltype(&MakeBitmap) real;
    Find(&real, "gdi32.dll", "CreateCompatibleBitmap");
    return MustFail("CreateCompatibleBitmap") ? nullptr
                                              : Keep("CreateCompatibleBitmap", real(dc, width, height));
}

HBITMAP WINAPI MakeSection(HDC dc, const BITMAPINFO *info, UINT usage, void **bits, HANDLE section,
                           DWORD offset) {
    static decltype(&MakeSection) real;
    Find(&real, "gdi32.dll", "CreateDIBSection");
    return MustFail("CreateDIBSection")
               ? nullptr
               : Keep("CreateDIBSection", real(dc, info, usage, bits, section, offset));
}

BOOL WINAPI GiveBackObject(HGDIOBJ object) {
    static decltype(&GiveBackObject) real;
    Find(&real, "gdi32.dll", "DeleteObject");
    Forget(object);
    return real(object);
}

BOOL WINAPI GiveBackContext(HDC dc) {
    static decltype(&GiveBackContext) real;
    Find(&real, "gdi32.dll", "DeleteDC");
    Forget(dc);
    return real(dc);
}

HDC WINAPI Borrow(HWND window) {
    static decltype(&Borrow) real;
    Find(&real, "user32.dll", "GetDC");
    return Keep("GetDC", real(window));
}

int WINAPI Return(HWND window, HDC dc) {
    static decltype(&Return) real;
    Find(&real, "user32.dll", "ReleaseDC");
    Forget(dc);
    return real(window, dc);
}

BOOL WINAPI Invalidate(HWND window, const RECT *rect, BOOL erase) {
    static decltype(&Invalidate) real;
    Find(&real, "user32.dll", "InvalidateRect");
    {
        const Busy busy;
        gInvalidations.push_back(rect ? *rect : RECT{});
    }
    return real(window, rect, erase);
}

BOOL WINAPI InvalidateRegion(HWND window, HRGN region, BOOL erase) {
    static decltype(&InvalidateRegion) real;
    Find(&real, "user32.dll", "InvalidateRgn");
    RECT box{};
    GetRgnBox(region, &box);
    {
        const Busy busy;
        gInvalidations.push_back(box);
    }
    return real(window, region, erase);
}

} // namespace

// The linker takes an import's address from here instead of from the import library.
extern "C" {
decltype(&MakeEvent) __imp_CreateEventA = MakeEvent;
decltype(&MakeMutex) __imp_CreateMutexA = MakeMutex;
decltype(&Close) __imp_CloseHandle = Close;
decltype(&MakeThread) __imp__beginthreadex = MakeThread;
decltype(&MakeRegion) __imp_CreateRectRgn = MakeRegion;
decltype(&MakeRegionFromData) __imp_ExtCreateRegion = MakeRegionFromData;
decltype(&Combine) __imp_CombineRgn = Combine;
decltype(&ReplaceByRect) __imp_SetRectRgn = ReplaceByRect;
decltype(&MakeContext) __imp_CreateCompatibleDC = MakeContext;
decltype(&MakeBitmap) __imp_CreateCompatibleBitmap = MakeBitmap;
decltype(&MakeSection) __imp_CreateDIBSection = MakeSection;
decltype(&GiveBackObject) __imp_DeleteObject = GiveBackObject;
decltype(&GiveBackContext) __imp_DeleteDC = GiveBackContext;
decltype(&Borrow) __imp_GetDC = Borrow;
decltype(&Return) __imp_ReleaseDC = Return;
decltype(&Invalidate) __imp_InvalidateRect = Invalidate;
decltype(&InvalidateRegion) __imp_InvalidateRgn = InvalidateRegion;
}

int LiveSystemObjects() {
    const Busy busy;
    return static_cast<int>(Live().size());
}

std::string LiveSystemObjectNames() {
    const Busy busy;
    std::map<std::string, int> counts;
    for (const auto &[handle, name] : Live())
        ++counts[name];
    std::string names;
    for (const auto &[name, count] : counts)
        names += name + " " + std::to_string(count) + ", ";
    return names;
}

long SystemObjectsMade() {
    const Busy busy;
    return gMade;
}

void FailSystemCall(const char *name, int n, DWORD error) {
    const Busy busy;
    gFailing = name;
    gFailIn = n;
    gFailError = error;
}

std::vector<RECT> TakeInvalidations() {
    const Busy busy;
    std::vector<RECT> taken;
    taken.swap(gInvalidations);
    return taken;
}
