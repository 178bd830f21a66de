#include "tests/viewers/ClipboardCalls.h"

#include <cstring>
#include <set>
#include <windows.h>

namespace {

const char *gFailing = nullptr;
std::set<HGLOBAL> gBlocks;
int gOpen = 0;

template <typename Function> Function *Real(const char *module, const char *name) {
    const FARPROC address = GetProcAddress(GetModuleHandleA(module), name);
    Function *function;
    static_assert(sizeof function == sizeof address);
    memcpy(&function, &address, sizeof function);
    return function;
}

bool Fails(const char *name) {
    if (!gFailing || strcmp(gFailing, name) != 0)
        return false;
    SetLastError(ERROR_ACCESS_DENIED);
    return true;
}

HGLOBAL WINAPI Allocate(UINT flags, SIZE_T size) {
    static const auto real = Real<decltype(Allocate)>("kernel32.dll", "GlobalAlloc");
    const HGLOBAL block = Fails("GlobalAlloc") ? nullptr : real(flags, size);
    if (block)
        gBlocks.insert(block);
    return block;
}

HGLOBAL WINAPI Free(HGLOBAL block) {
    static const auto real = Real<decltype(Free)>("kernel32.dll", "GlobalFree");
    gBlocks.erase(block);
    return real(block);
}

LPVOID WINAPI Lock(HGLOBAL block) {
    static const auto real = Real<decltype(Lock)>("kernel32.dll", "GlobalLock");
    return Fails("GlobalLock") ? nullptr : real(block);
}

SIZE_T WINAPI Size(HGLOBAL block) {
    static const auto real = Real<decltype(Size)>("kernel32.dll", "GlobalSize");
    return Fails("GlobalSize") ? 3 : real(block);
}

BOOL WINAPI Open(HWND owner) {
    static const auto real = Real<decltype(Open)>("user32.dll", "OpenClipboard");
    const BOOL opened = Fails("OpenClipboard") ? FALSE : real(owner);
    gOpen += opened != FALSE;
    return opened;
}

BOOL WINAPI Empty() {
    static const auto real = Real<decltype(Empty)>("user32.dll", "EmptyClipboard");
    return Fails("EmptyClipboard") ? FALSE : real();
}

HANDLE WINAPI Put(UINT format, HANDLE block) {
    static const auto real = Real<decltype(Put)>("user32.dll", "SetClipboardData");
    const HANDLE put = Fails("SetClipboardData") ? nullptr : real(format, block);
    if (put)
        gBlocks.erase(block);
    return put;
}

BOOL WINAPI Close() {
    static const auto real = Real<decltype(Close)>("user32.dll", "CloseClipboard");
    --gOpen;
    return real();
}

} // namespace

// The linker takes an import's address from here instead of from the import library.
extern "C" {
decltype(&Allocate) __imp_GlobalAlloc = Allocate;
decltype(&Free) __imp_GlobalFree = Free;
decltype(&Lock) __imp_GlobalLock = Lock;
decltype(&Size) __imp_GlobalSize = Size;
decltype(&Open) __imp_OpenClipboard = Open;
decltype(&Empty) __imp_EmptyClipboard = Empty;
decltype(&Put) __imp_SetClipboardData = Put;
decltype(&Close) __imp_CloseClipboard = Close;
}

void FailClipboardCall(const char *name) {
    gFailing = name;
}

int LiveGlobalBlocks() {
    return static_cast<int>(gBlocks.size());
}

int ClipboardsOpen() {
    return gOpen;
}
