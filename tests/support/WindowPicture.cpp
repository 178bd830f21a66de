#include "tests/support/WindowPicture.h"

#include <cstring>

namespace {

Picture CaptureContext(HDC source, int width, int height) {
    Picture picture;
    picture.width = width;
    picture.height = height;
    picture.pixels.resize(static_cast<size_t>(width) * height);
    BITMAPINFO info = {};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void *bits = nullptr;
    const HDC memory = CreateCompatibleDC(source);
    const HBITMAP bitmap = CreateDIBSection(memory, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ old = SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, width, height, source, 0, 0, SRCCOPY);
    GdiFlush();
    memcpy(picture.pixels.data(), bits, picture.pixels.size() * sizeof(uint32_t));
    // Drawing leaves anything in the highest byte, which viewers take for transparency.
    for (uint32_t &pixel : picture.pixels)
        pixel |= 0xFF000000;
    SelectObject(memory, old);
    DeleteObject(bitmap);
    DeleteDC(memory);
    return picture;
}

} // namespace

Picture CaptureWindow(HWND window) {
    RECT rect = {};
    GetWindowRect(window, &rect);
    const HDC dc = GetWindowDC(window);
    const Picture picture = CaptureContext(dc, rect.right - rect.left, rect.bottom - rect.top);
    ReleaseDC(window, dc);
    return picture;
}

Picture CaptureClient(HWND window) {
    RECT rect = {};
    GetClientRect(window, &rect);
    const HDC dc = GetDC(window);
    const Picture picture = CaptureContext(dc, rect.right, rect.bottom);
    ReleaseDC(window, dc);
    return picture;
}
