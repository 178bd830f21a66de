#include "ui/fields/ParameterEditPaint.h"

#include "ui/fields/NumberText.h"
#include "ui/fields/ParameterValue.h"

#include <algorithm>
#include <iterator>

#include <richedit.h>

namespace {

constexpr int kHighlightMargin = 3; // pixels by which the highlight is wider than the text
// Dialog units: a line of the dialog's text, and a field in the template.
constexpr int kLineUnits = 8, kFieldUnits = 12;
constexpr int kInsetPart = 4; // of a line's height, left and right of the digits

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

// One line as high as the labels' in the middle of the field, so that digits and labels have one size at
// every scale.
void SetFormattingRect(HWND edit) {
    RECT window = {}, client = {};
    GetWindowRect(edit, &window);
    GetClientRect(edit, &client);
    const LONG line = MulDiv(window.bottom - window.top, kLineUnits, kFieldUnits);
    const LONG margin = std::max(0L, (client.bottom - line) / 2);
    const LONG inset = line / kInsetPart;
    const RECT wanted = {inset, margin, std::max(inset, client.right - inset), margin + line};
    // A field with a border may take a little more or less than it is given.
    RECT given = wanted;
    SendMessageA(edit, EM_SETRECT, 0, reinterpret_cast<LPARAM>(&given));
    const RECT taken = FormattingRect(edit);
    given = {2 * wanted.left - taken.left, 2 * wanted.top - taken.top, 2 * wanted.right - taken.right,
             2 * wanted.bottom - taken.bottom};
    SendMessageA(edit, EM_SETRECT, 0, reinterpret_cast<LPARAM>(&given));
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
    FillRect(dc, &client, GetSysColorBrush(COLOR_WINDOW));
    const RECT format = FormattingRect(row.edit);
    const FieldText text = TextToDraw(row);
    const HGDIOBJ oldFont = SelectObject(dc, row.font ? row.font : GetStockObject(DEFAULT_GUI_FONT));
    if (row.editing) {
        SIZE extent = {};
        GetTextExtentPoint32W(dc, text.characters, text.length, &extent);
        const RECT box = {format.left, format.top, format.left + extent.cx + kHighlightMargin,
                          format.top + extent.cy};
        FillRect(dc, &box, GetSysColorBrush(COLOR_HIGHLIGHT));
    }
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, GetSysColor(row.editing ? COLOR_HIGHLIGHTTEXT : COLOR_WINDOWTEXT));
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
    SetFormattingRect(row->edit);
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
