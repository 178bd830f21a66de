#include "ui/look/DialogBackBuffer.h"

#include "ui/window/Palette.h"

namespace {

constexpr size_t kClassNameCapacity = 32;

struct BackBuffer {
    HDC dc; // memory context with `bitmap` selected, or null
    HBITMAP bitmap;
    HGDIOBJ oldBitmap;
    SIZE size; // pixels
};

BackBuffer gBackBuffer = {};

SIZE WindowSize(HWND window) {
    RECT rect = {};
    GetWindowRect(window, &rect);
    return {rect.right - rect.left, rect.bottom - rect.top};
}

void FillBackground(HDC dc, const RECT &rect) {
    FillWith(dc, rect, kFaceColor);
}

// The part of the buffer that is there, and plain background for the rest.
void CopyBackground(HDC dc, const RECT &rect) {
    const RECT whole = {0, 0, gBackBuffer.size.cx, gBackBuffer.size.cy};
    RECT part = {};
    const bool buffered =
        gBackBuffer.bitmap && IntersectRect(&part, &rect, &whole) && EqualRect(&part, &rect);
    if (!buffered || !BitBlt(dc, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top,
                             gBackBuffer.dc, rect.left, rect.top, SRCCOPY))
        FillBackground(dc, rect);
}

// A group box is a frame that shows what is behind it; the other controls fill their whole window.
bool CoversItself(HWND control) {
    char name[kClassNameCapacity] = "";
    GetClassNameA(control, name, sizeof name);
    const LONG_PTR type = GetWindowLongPtrA(control, GWL_STYLE) & BS_TYPEMASK;
    return lstrcmpiA(name, "Button") != 0 || type != BS_GROUPBOX;
}

// Background under a control that paints itself next would flash.
void ExcludeControls(HWND dialog, HDC dc) {
    for (HWND control = GetWindow(dialog, GW_CHILD); control; control = GetWindow(control, GW_HWNDNEXT)) {
        RECT rect = {};
        if (!IsWindowVisible(control) || !CoversItself(control) || !GetWindowRect(control, &rect))
            continue;
        MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT *>(&rect), 2);
        ExcludeClipRect(dc, rect.left, rect.top, rect.right, rect.bottom);
    }
}

} // namespace

bool CreateDialogBackBuffer(HWND dialog) {
    if (!gBackBuffer.dc)
        gBackBuffer.dc = CreateCompatibleDC(nullptr);
    ResizeDialogBackBuffer(dialog);
    return gBackBuffer.bitmap != nullptr;
}

void ResizeDialogBackBuffer(HWND dialog) {
    const SIZE size = WindowSize(dialog);
    if (!gBackBuffer.dc || size.cx <= 0 || size.cy <= 0)
        return;
    const HDC screen = GetDC(nullptr);
    const HBITMAP bitmap = screen ? CreateCompatibleBitmap(screen, size.cx, size.cy) : nullptr;
    if (screen)
        ReleaseDC(nullptr, screen);
    const HGDIOBJ replaced = bitmap ? SelectObject(gBackBuffer.dc, bitmap) : nullptr;
    if (!replaced) {
        if (bitmap)
            DeleteObject(bitmap);
    } else {
        if (gBackBuffer.bitmap)
            DeleteObject(gBackBuffer.bitmap);
        else
            gBackBuffer.oldBitmap = replaced;
        gBackBuffer.bitmap = bitmap;
        gBackBuffer.size = size;
    }
    if (gBackBuffer.bitmap)
        FillBackground(gBackBuffer.dc, {0, 0, gBackBuffer.size.cx, gBackBuffer.size.cy});
}

void FreeDialogBackBuffer() {
    if (gBackBuffer.bitmap) {
        SelectObject(gBackBuffer.dc, gBackBuffer.oldBitmap);
        DeleteObject(gBackBuffer.bitmap);
    }
    if (gBackBuffer.dc)
        DeleteDC(gBackBuffer.dc);
    gBackBuffer = {};
}

void PaintDialogFromBackBuffer(HWND dialog) {
    PAINTSTRUCT paint;
    const HDC dc = BeginPaint(dialog, &paint);
    if (!dc)
        return;
    ExcludeControls(dialog, dc);
    CopyBackground(dc, paint.rcPaint);
    EndPaint(dialog, &paint);
}

void PrintDialogFromBackBuffer(HWND dialog, HDC dc) {
    RECT client = {};
    GetClientRect(dialog, &client);
    CopyBackground(dc, client);
}
