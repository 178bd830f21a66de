#include "ui/paint/CaptionText.h"

#include <algorithm>

namespace {

constexpr int kUnderlinePart = 14; // of a line's height

HGDIOBJ SelectFontOf(HWND control, HDC dc) {
    const LRESULT font = SendMessageW(control, WM_GETFONT, 0, 0);
    return SelectObject(dc, font ? reinterpret_cast<HGDIOBJ>(font) : GetStockObject(DEFAULT_GUI_FONT));
}

// Where each letter ends, in pixels. Letters are drawn where they were measured: left to itself, drawing may
// come to another width.
struct Advances {
    int ends[kMostCaption];
    int steps[kMostCaption];
};

int WidthOf(const Advances &advances, int letters) {
    return letters > 0 ? advances.ends[letters - 1] : 0;
}

Advances Measure(HDC dc, const Caption &caption) {
    Advances advances = {};
    SIZE size = {};
    GetTextExtentExPointW(dc, caption.text, caption.length, 0, nullptr, advances.ends, &size);
    for (int i = 0; i < caption.length; ++i)
        advances.steps[i] = WidthOf(advances, i + 1) - WidthOf(advances, i);
    return advances;
}

void DrawUnderline(HDC dc, int first, int end, LONG textTop, PaletteColor color) {
    TEXTMETRICW metrics = {};
    GetTextMetricsW(dc, &metrics);
    const int thickness = std::max(1, static_cast<int>(metrics.tmHeight) / kUnderlinePart);
    const int top = static_cast<int>(textTop + metrics.tmAscent) + thickness;
    FillWith(dc, {first, top, end, top + thickness}, color);
}

} // namespace

Caption CaptionOf(HWND control) {
    wchar_t marked[kMostCaption] = L"";
    GetWindowTextW(control, marked, kMostCaption);
    Caption caption = {};
    caption.underlined = -1;
    for (const wchar_t *at = marked; *at; ++at) {
        if (*at == L'&' && *++at != L'&')
            caption.underlined = caption.length;
        if (!*at)
            break;
        caption.text[caption.length++] = *at;
    }
    if (caption.underlined >= caption.length ||
        (SendMessageW(control, WM_QUERYUISTATE, 0, 0) & UISF_HIDEACCEL))
        caption.underlined = -1;
    return caption;
}

SIZE MeasureCaption(HDC dc, HWND control, const Caption &caption) {
    SIZE size = {};
    const HGDIOBJ oldFont = SelectFontOf(control, dc);
    GetTextExtentPoint32W(dc, caption.text, caption.length, &size);
    SelectObject(dc, oldFont);
    return size;
}

void DrawCaption(HDC dc, HWND control, const Caption &caption, const RECT &rect, PaletteColor color) {
    const SIZE size = MeasureCaption(dc, control, caption);
    const HGDIOBJ oldFont = SelectFontOf(control, dc);
    const Advances advances = Measure(dc, caption);
    const int left = static_cast<int>(rect.left);
    const LONG top = rect.top + (rect.bottom - rect.top - size.cy) / 2;
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, ColorOf(color));
    ExtTextOutW(dc, left, static_cast<int>(top), ETO_CLIPPED, &rect, caption.text,
                static_cast<UINT>(caption.length), advances.steps);
    if (caption.underlined >= 0)
        DrawUnderline(dc, left + WidthOf(advances, caption.underlined),
                      left + WidthOf(advances, caption.underlined + 1), top, color);
    SelectObject(dc, oldFont);
}
