#include "host/sheet/SheetText.h"

#include <windows.h>

namespace host {

constexpr int kBelowLetters = 6; // pixels of the strip that letters leave free

static void DrawLetters(HDC context, const std::wstring &text, int32_t width, int32_t height) {
    LOGFONTW form = {};
    form.lfHeight = -(height - kBelowLetters) * 3 / 4;
    form.lfQuality = ANTIALIASED_QUALITY;
    std::wcscpy(form.lfFaceName, L"Segoe UI");
    const HFONT font = CreateFontIndirectW(&form);
    const HGDIOBJ before = SelectObject(context, font);
    RECT strip = {0, 0, width, height};
    SetTextColor(context, RGB(255, 255, 255));
    SetBkMode(context, TRANSPARENT);
    DrawTextW(context, text.c_str(), static_cast<int>(text.size()), &strip,
              DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
    GdiFlush();
    SelectObject(context, before);
    DeleteObject(font);
}

Bytes DrawLabel(const std::wstring &text, int32_t width, int32_t height) {
    Bytes strip(static_cast<size_t>(width) * static_cast<size_t>(height));
    BITMAPINFO info = {};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void *pixels = nullptr;
    const HDC context = CreateCompatibleDC(nullptr);
    const HBITMAP bitmap = CreateDIBSection(context, &info, DIB_RGB_COLORS, &pixels, nullptr, 0);
    if (context && bitmap) {
        const HGDIOBJ before = SelectObject(context, bitmap);
        DrawLetters(context, text, width, height);
        const auto *drawn = static_cast<const uint8_t *>(pixels);
        for (size_t i = 0; i < strip.size(); i++)
            strip[i] = drawn[i * 4 + 1];
        SelectObject(context, before);
    }
    if (bitmap)
        DeleteObject(bitmap);
    if (context)
        DeleteDC(context);
    return strip;
}

} // namespace host
