#include "tests/ui/GdiCalls.h"

#include <cstring>
#include <set>
#include <windows.h>

namespace {

std::set<void *> gLive;
int gFailIn = 0;

template <typename Function> Function *Real(const char *name, const char *module = "gdi32.dll") {
    const FARPROC address = GetProcAddress(GetModuleHandleA(module), name);
    Function *function;
    static_assert(sizeof function == sizeof address);
    memcpy(&function, &address, sizeof function);
    return function;
}

bool MustFail() {
    return gFailIn > 0 && --gFailIn == 0;
}

template <typename Handle> Handle Keep(Handle handle) {
    if (handle)
        gLive.insert(handle);
    return handle;
}

HDC WINAPI MakeContext(HDC dc) {
    static const auto real = Real<decltype(MakeContext)>("CreateCompatibleDC");
    return MustFail() ? nullptr : Keep(real(dc));
}

HBITMAP WINAPI MakeBitmap(HDC dc, int width, int height) {
    static const auto real = Real<decltype(MakeBitmap)>("CreateCompatibleBitmap");
    return MustFail() ? nullptr : Keep(real(dc, width, height));
}

HFONT WINAPI MakeFont(int height, int width, int escapement, int orientation, int weight, DWORD italic,
                      DWORD underline, DWORD strikeOut, DWORD charSet, DWORD outPrecision,
                      DWORD clipPrecision, DWORD quality, DWORD pitch, LPCWSTR face) {
    static const auto real = Real<decltype(MakeFont)>("CreateFontW");
    return MustFail() ? nullptr
                      : Keep(real(height, width, escapement, orientation, weight, italic, underline,
                                  strikeOut, charSet, outPrecision, clipPrecision, quality, pitch, face));
}

HRGN WINAPI MakeRegion(int left, int top, int right, int bottom) {
    static const auto real = Real<decltype(MakeRegion)>("CreateRectRgn");
    return MustFail() ? nullptr : Keep(real(left, top, right, bottom));
}

HBITMAP WINAPI MakePixels(HDC dc, const BITMAPINFO *info, UINT usage, void **bits, HANDLE section,
                          DWORD offset) {
    static const auto real = Real<decltype(MakePixels)>("CreateDIBSection");
    return MustFail() ? nullptr : Keep(real(dc, info, usage, bits, section, offset));
}

HICON WINAPI MakeIcon(ICONINFO *info) {
    static const auto real = Real<decltype(MakeIcon)>("CreateIconIndirect", "user32.dll");
    return MustFail() ? nullptr : Keep(real(info));
}

HANDLE WINAPI LoadPicture(HINSTANCE module, LPCSTR name, UINT type, int width, int height, UINT flags) {
    static const auto real = Real<decltype(LoadPicture)>("LoadImageA", "user32.dll");
    return MustFail() ? nullptr : Keep(real(module, name, type, width, height, flags));
}

BOOL WINAPI GiveBackIcon(HICON icon) {
    static const auto real = Real<decltype(GiveBackIcon)>("DestroyIcon", "user32.dll");
    gLive.erase(icon);
    return real(icon);
}

BOOL WINAPI GiveBackObject(HGDIOBJ object) {
    static const auto real = Real<decltype(GiveBackObject)>("DeleteObject");
    gLive.erase(object);
    return real(object);
}

BOOL WINAPI GiveBackContext(HDC dc) {
    static const auto real = Real<decltype(GiveBackContext)>("DeleteDC");
    gLive.erase(dc);
    return real(dc);
}

} // namespace

// The linker takes an import's address from here instead of from the import library.
extern "C" {
decltype(&MakeContext) __imp_CreateCompatibleDC = MakeContext;
decltype(&MakeBitmap) __imp_CreateCompatibleBitmap = MakeBitmap;
decltype(&MakeFont) __imp_CreateFontW = MakeFont;
decltype(&MakeRegion) __imp_CreateRectRgn = MakeRegion;
decltype(&MakePixels) __imp_CreateDIBSection = MakePixels;
decltype(&MakeIcon) __imp_CreateIconIndirect = MakeIcon;
decltype(&LoadPicture) __imp_LoadImageA = LoadPicture;
decltype(&GiveBackIcon) __imp_DestroyIcon = GiveBackIcon;
decltype(&GiveBackObject) __imp_DeleteObject = GiveBackObject;
decltype(&GiveBackContext) __imp_DeleteDC = GiveBackContext;
}

int LiveGdiObjects() {
    return static_cast<int>(gLive.size());
}

void FailGdiCreation(int n) {
    gFailIn = n;
}
