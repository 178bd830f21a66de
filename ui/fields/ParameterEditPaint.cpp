#include "ui/fields/ParameterEditPaint.h"

#include "ui/fields/FieldFrame.h"
#include "ui/fields/NumberText.h"
#include "ui/fields/ParameterValue.h"
#include "ui/window/Palette.h"

#include <algorithm>
#include <iterator>

#include <richedit.h>

namespace {

constexpr int kHighlightMargin = 3; // pixels by which the highlight is wider than the text

HFONT gParameterFont = nullptr; // dialog's thread; made with the first field, deleted with the last

struct FieldText {
    wchar_t characters[kNumberTextCapacity];
    int length;
};

RECT FormattingRect(HWND edit) {
    RECT rect = {};
    SendMessageA(edit, EM_GETRECT, 0, reinterpret_cast<LPARAM>(&rect));
    return rect;
}

// While the user types, the field shows what was typed; otherwise it shows the parameter.
FieldText TextToDraw(const ParameterControl &row) {
    FieldText text = {};
    if (row.editing) {
        text.length = GetWindowTextW(row.edit, text.characters, std::size(text.characters));
        return text;
    }
    char digits[kNumberTextCapacity];
    FormatScaledNumber(*row.value, row.decimals, digits, sizeof digits);
    for (; digits[text.length] != '\0'; ++text.length)
        text.characters[text.length] = static_cast<wchar_t>(digits[text.length]);
    return text;
}

void DrawField(HDC dc, const RECT &client, const ParameterControl &row) {
    FillWith(dc, client, kFieldColor);
    const RECT format = FormattingRect(row.edit);
    const FieldText text = TextToDraw(row);
    const HGDIOBJ oldFont = SelectObject(dc, row.font ? row.font : GetStockObject(DEFAULT_GUI_FONT));
    if (row.editing) {
        SIZE extent = {};
        GetTextExtentPoint32W(dc, text.characters, text.length, &extent);
        const RECT box = {format.left, format.top, format.left + extent.cx + kHighlightMargin,
                          format.top + extent.cy};
        FillWith(dc, box, kHighlightColor);
    }
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, ColorOf(row.editing ? kHighlightTextColor : kFieldTextColor));
    TextOutW(dc, format.left, format.top, text.characters, text.length);
    SelectObject(dc, oldFont);
}

// Drawn off the screen first, so that nothing flickers while a trackbar is dragged.
bool DrawFieldBuffered(HDC dc, const RECT &client, const ParameterControl &row) {
    const HDC memory = CreateCompatibleDC(dc);
    const HBITMAP bitmap = CreateCompatibleBitmap(dc, client.right, client.bottom);
    bool drawn = false;
    if (memory && bitmap) {
        const HGDIOBJ oldBitmap = SelectObject(memory, bitmap);
        DrawField(memory, client, row);
        drawn = BitBlt(dc, 0, 0, client.right, client.bottom, memory, 0, 0, SRCCOPY) != FALSE;
        SelectObject(memory, oldBitmap);
    }
    if (bitmap)
        DeleteObject(bitmap);
    if (memory)
        DeleteDC(memory);
    return drawn;
}

} // namespace

void UseParameterFont(ParameterControl *row) {
    FrameField(row->edit);
    const RECT format = FormattingRect(row->edit);
    const int height = format.bottom - format.top;
    if (!gParameterFont && height > 0)
        gParameterFont =
            CreateFontW(height, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS,
                        CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY, DEFAULT_PITCH | FF_DONTCARE, L"Tahoma");
    row->font = gParameterFont;
    if (row->font)
        SendMessageW(row->edit, WM_SETFONT, reinterpret_cast<WPARAM>(row->font), FALSE);
}

void DeleteParameterFont() {
    if (gParameterFont)
        DeleteObject(gParameterFont);
    gParameterFont = nullptr;
}

void RenewParameterFont() {
    const HFONT oldFont = gParameterFont;
    gParameterFont = nullptr;
    for (ParameterControl &row : gParameterControls)
        if (row.edit)
            UseParameterFont(&row);
    if (oldFont)
        DeleteObject(oldFont);
}

void PaintParameterEdit(const ParameterControl &row) {
    PAINTSTRUCT paint;
    const HDC dc = BeginPaint(row.edit, &paint);
    if (!dc)
        return;
    RECT client;
    GetClientRect(row.edit, &client);
    if (!DrawFieldBuffered(dc, client, row))
        DrawField(dc, client, row);
    EndPaint(row.edit, &paint);
}
