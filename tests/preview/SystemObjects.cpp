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

// The system's own function; not kept in a static, whose guard would make system objects itself.
template <typename Result, typename... Arguments>
Result CallReal(const char *module, const char *name, Arguments... arguments) {
    const FARPROC address = GetProcAddress(GetModuleHandleA(module), name);
    Result(WINAPI * real)(Arguments...) = nullptr;
    static_assert(sizeof real == sizeof address);
    memcpy(&real, &address, sizeof real);
    return real(arguments...);
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

void NoteInvalid(const RECT &rect) {
    const Busy busy;
    gInvalidations.push_back(rect);
}

template <typename Handle, typename... Arguments>
Handle Make(const char *module, const char *name, Arguments... arguments) {
    return MustFail(name) ? Handle{} : Keep(name, CallReal<Handle>(module, name, arguments...));
}

HANDLE WINAPI MakeEvent(LPSECURITY_ATTRIBUTES security, BOOL manual, BOOL initial, LPCSTR name) {
    return Make<HANDLE>("kernel32.dll", "CreateEventA", security, manual, initial, name);
}
HANDLE WINAPI MakeMutex(LPSECURITY_ATTRIBUTES security, BOOL owner, LPCSTR name) {
    return Make<HANDLE>("kernel32.dll", "CreateMutexA", security, owner, name);
}
BOOL WINAPI Close(HANDLE handle) {
    Forget(handle);
    return CallReal<BOOL>("kernel32.dll", "CloseHandle", handle);
}
uintptr_t __cdecl MakeThread(void *security, unsigned stack, unsigned(__stdcall *body)(void *),
                             void *argument, unsigned flags, unsigned *id) {
    return Make<uintptr_t>("msvcrt.dll", "_beginthreadex", security, stack, body, argument, flags, id);
}
HRGN WINAPI MakeRegion(int left, int top, int right, int bottom) {
    return Make<HRGN>("gdi32.dll", "CreateRectRgn", left, top, right, bottom);
}
HRGN WINAPI MakeRegionFromData(const XFORM *form, DWORD bytes, const RGNDATA *data) {
    return Make<HRGN>("gdi32.dll", "ExtCreateRegion", form, bytes, data);
}
int WINAPI Combine(HRGN region, HRGN a, HRGN b, int mode) {
    return MustFail("CombineRgn") ? ERROR : CallReal<int>("gdi32.dll", "CombineRgn", region, a, b, mode);
}
BOOL WINAPI ReplaceByRect(HRGN region, int left, int top, int right, int bottom) {
    return !MustFail("SetRectRgn") &&
           CallReal<BOOL>("gdi32.dll", "SetRectRgn", region, left, top, right, bottom);
}
HDC WINAPI MakeContext(HDC dc) {
    return Make<HDC>("gdi32.dll", "CreateCompatibleDC", dc);
}
HBITMAP WINAPI MakeBitmap(HDC dc, int width, int height) {
    return Make<HBITMAP>("gdi32.dll", "CreateCompatibleBitmap", dc, width, height);
}
HBITMAP WINAPI MakeSection(HDC dc, const BITMAPINFO *info, UINT usage, void **bits, HANDLE section,
                           DWORD offset) {
    return Make<HBITMAP>("gdi32.dll", "CreateDIBSection", dc, info, usage, bits, section, offset);
}
BOOL WINAPI GiveBackObject(HGDIOBJ object) {
    Forget(object);
    return CallReal<BOOL>("gdi32.dll", "DeleteObject", object);
}
BOOL WINAPI GiveBackContext(HDC dc) {
    Forget(dc);
    return CallReal<BOOL>("gdi32.dll", "DeleteDC", dc);
}
HDC WINAPI Borrow(HWND window) {
    return Make<HDC>("user32.dll", "GetDC", window);
}
int WINAPI Return(HWND window, HDC dc) {
    Forget(dc);
    return CallReal<int>("user32.dll", "ReleaseDC", window, dc);
}
BOOL WINAPI Invalidate(HWND window, const RECT *rect, BOOL erase) {
    NoteInvalid(rect ? *rect : RECT{});
    return CallReal<BOOL>("user32.dll", "InvalidateRect", window, rect, erase);
}
BOOL WINAPI InvalidateRegion(HWND window, HRGN region, BOOL erase) {
    RECT box{};
    GetRgnBox(region, &box);
    NoteInvalid(box);
    return CallReal<BOOL>("user32.dll", "InvalidateRgn", window, region, erase);
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
