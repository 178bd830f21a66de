#include "ui/paint/PaintedButtons.h"

#include "ui/paint/CaptionText.h"
#include "ui/window/Palette.h"

#include <algorithm>
#include <commctrl.h>
#include <cstdlib>
#include <uxtheme.h>
#include <vsstyle.h>

namespace {

constexpr UINT kStaticTypes = SS_TYPEMASK;
constexpr int kMarkSteps = 12; // of a check mark's drawing

RECT ClientOf(HWND control) {
    RECT client = {};
    GetClientRect(control, &client);
    return client;
}

// A pixel of the template's scale, as the control's text has it.
int Pixel(HDC dc, HWND control, const Caption &caption) {
    constexpr LONG textHeight = 13; // at the scale of the template
    return std::max(1L, (MeasureCaption(dc, control, caption).cy + textHeight / 2) / textHeight);
}

PaletteColor TextColorOf(HWND control) {
    return IsWindowEnabled(control) ? kTextColor : kGreyTextColor;
}

bool ShowsFocus(HWND control) {
    return GetFocus() == control && !(SendMessageW(control, WM_QUERYUISTATE, 0, 0) & UISF_HIDEFOCUS);
}

void DrawFocus(HDC dc, const RECT &rect) {
    SetTextColor(dc, ColorOf(kTextColor));
    SetBkColor(dc, ColorOf(kFaceColor));
    DrawFocusRect(dc, &rect);
}

struct BoxState {
    bool checked, enabled, hot, pressed;
};

// False where the controls have no theme.
bool DrawThemedBox(HWND control, HDC dc, const RECT &box, const BoxState &state) {
    const HTHEME theme = OpenThemeData(control, L"Button");
    if (!theme)
        return false;
    const int first = state.checked ? CBS_CHECKEDNORMAL : CBS_UNCHECKEDNORMAL;
    const int step = !state.enabled  ? 3
                     : state.pressed ? 2
                     : state.hot     ? 1
                                     : 0; // normal, hot, pressed, disabled
    const bool drawn = SUCCEEDED(DrawThemeBackground(theme, dc, BP_CHECKBOX, first + step, &box, nullptr));
    CloseThemeData(theme);
    return drawn;
}

// Down to the corner and up again, on a grid of kMarkSteps.
void DrawCheckMark(HDC dc, const RECT &box, PaletteColor color) {
    const int size = static_cast<int>(box.right - box.left), x = static_cast<int>(box.left),
              y = static_cast<int>(box.top);
    const auto at = [size](int step) { return step * size / kMarkSteps; };
    const int thickness = std::max(1, size / 7);
    for (int i = at(3); i <= at(9); ++i) {
        const int middle = y + at(8) - std::abs(i - at(5));
        FillWith(dc, {x + i, middle - thickness / 2, x + i + 1, middle + thickness + 1}, color);
    }
}

void DrawDarkBox(HDC dc, const RECT &box, const BoxState &state) {
    const bool isFilled = state.checked && state.enabled;
    FillWith(dc, box, isFilled ? kAccentColor : state.pressed ? kPressedButtonColor : kFieldColor);
    FrameWith(dc, box, isFilled || state.hot ? kAccentColor : kLineColor);
    if (state.checked)
        DrawCheckMark(dc, box, isFilled ? kFieldColor : kGreyTextColor);
}

void DrawBox(HWND control, HDC dc, RECT box, const BoxState &state) {
    if (IsDarkLook())
        return DrawDarkBox(dc, box, state);
    if (DrawThemedBox(control, dc, box, state))
        return;
    const UINT look = DFCS_BUTTONCHECK | DFCS_FLAT | (state.checked ? DFCS_CHECKED : 0U) |
                      (state.enabled ? 0U : static_cast<UINT>(DFCS_INACTIVE)) |
                      (state.pressed ? static_cast<UINT>(DFCS_PUSHED) : 0U);
    DrawFrameControl(dc, &box, DFC_BUTTON, look);
}

BoxState StateOf(HWND button) {
    const LRESULT state = SendMessageW(button, BM_GETSTATE, 0, 0);
    return {(state & BST_CHECKED) != 0, IsWindowEnabled(button) != FALSE, (state & BST_HOT) != 0,
            (state & BST_PUSHED) != 0};
}

// The text field of a list, where the list itself says that it is.
RECT ListTextRect(HWND combo, RECT *arrow) {
    COMBOBOXINFO info = {};
    info.cbSize = sizeof info;
    if (!GetComboBoxInfo(combo, &info))
        return {};
    *arrow = info.rcButton;
    return info.rcItem;
}

void DrawArrow(HDC dc, const RECT &rect, PaletteColor color) {
    const int half = std::max(2, static_cast<int>(rect.bottom - rect.top) / 6);
    const int middle = static_cast<int>(rect.left + rect.right) / 2;
    const int top = static_cast<int>(rect.top + rect.bottom - half) / 2;
    for (int i = 0; i <= half; ++i)
        FillWith(dc, {middle - half + i, top + i, middle + half - i + 1, top + i + 1}, color);
}

// What the owner draws of its list, as the list would ask for it.
void AskOwnerToDraw(HWND combo, HDC dc, const RECT &rect, UINT state) {
    const LRESULT row = SendMessageW(combo, CB_GETCURSEL, 0, 0);
    DRAWITEMSTRUCT item = {};
    item.CtlType = ODT_COMBOBOX;
    item.CtlID = static_cast<UINT>(GetDlgCtrlID(combo));
    item.itemID = static_cast<UINT>(row);
    item.itemAction = ODA_DRAWENTIRE;
    item.itemState = state | ODS_COMBOBOXEDIT | (IsWindowEnabled(combo) ? 0U : UINT{ODS_DISABLED});
    item.hwndItem = combo;
    item.hDC = dc;
    item.rcItem = rect;
    item.itemData =
        row < 0 ? 0
                : static_cast<ULONG_PTR>(SendMessageW(combo, CB_GETITEMDATA, static_cast<WPARAM>(row), 0));
    const LRESULT font = SendMessageW(combo, WM_GETFONT, 0, 0);
    const HGDIOBJ oldFont = font ? SelectObject(dc, reinterpret_cast<HGDIOBJ>(font)) : nullptr;
    SendMessageW(GetParent(combo), WM_DRAWITEM, item.CtlID, reinterpret_cast<LPARAM>(&item));
    if (oldFont)
        SelectObject(dc, oldFont);
}

} // namespace

void PaintName(HWND name, HDC dc) {
    const RECT client = ClientOf(name);
    const Caption caption = CaptionOf(name);
    FillWith(dc, client, kFaceColor);
    DrawCaption(dc, name, caption, client, TextColorOf(name));
}

// Only the frame and the caption: the group lies over its controls.
void PaintGroup(HWND group, HDC dc) {
    const RECT client = ClientOf(group);
    const Caption caption = CaptionOf(group);
    const SIZE size = MeasureCaption(dc, group, caption);
    const LONG gap = size.cy / 4;
    const RECT text = {2 * gap, 0, std::min(2 * gap + size.cx, client.right - gap), size.cy};
    const int saved = SaveDC(dc);
    const RECT behind = {text.left - gap, 0, text.right + gap, text.bottom};
    FillWith(dc, behind, kFaceColor);
    DrawCaption(dc, group, caption, text, TextColorOf(group));
    if (caption.length > 0)
        ExcludeClipRect(dc, static_cast<int>(behind.left), 0, static_cast<int>(behind.right),
                        static_cast<int>(behind.bottom));
    const int line = Pixel(dc, group, caption);
    for (int i = 0; i < line; ++i)
        FrameWith(dc, {client.left + i, size.cy / 2 + i, client.right - i, client.bottom - i}, kLineColor);
    RestoreDC(dc, saved);
}

void PaintCheckBox(HWND box, HDC dc) {
    const RECT client = ClientOf(box);
    const Caption caption = CaptionOf(box);
    const SIZE text = MeasureCaption(dc, box, caption);
    const LONG side = std::min(text.cy, client.bottom), top = (client.bottom - side) / 2;
    FillWith(dc, client, kFaceColor);
    DrawBox(box, dc, {0, top, side, top + side}, StateOf(box));
    RECT place = {side + side / 3, 0, std::min(side + side / 3 + text.cx, client.right), client.bottom};
    DrawCaption(dc, box, caption, place, TextColorOf(box));
    if (!ShowsFocus(box))
        return;
    InflateRect(&place, 1, 0);
    DrawFocus(dc, place);
}

void PaintPushButton(HWND button, HDC dc) {
    RECT client = ClientOf(button);
    const Caption caption = CaptionOf(button);
    const SIZE text = MeasureCaption(dc, button, caption);
    const BoxState state = StateOf(button);
    const bool isDefault = (GetWindowLongW(button, GWL_STYLE) & BS_TYPEMASK) == BS_DEFPUSHBUTTON;
    FillWith(dc, client, state.pressed ? kPressedButtonColor : state.hot ? kHotButtonColor : kButtonColor);
    FrameWith(dc, client, state.enabled && (isDefault || ShowsFocus(button)) ? kAccentColor : kLineColor);
    const LONG left = std::max(2L, (client.right - text.cx) / 2);
    DrawCaption(dc, button, caption, {left, 0, std::min(left + text.cx, client.right - 2), client.bottom},
                TextColorOf(button));
    InflateRect(&client, -3, -3);
    if (ShowsFocus(button))
        DrawFocus(dc, client);
}

void PaintDropDownList(HWND combo, HDC dc) {
    const RECT client = ClientOf(combo);
    const bool hasFocus = GetFocus() == combo;
    RECT arrow = {}, text = ListTextRect(combo, &arrow);
    FillWith(dc, client, kFieldColor);
    FrameWith(dc, client, hasFocus ? kAccentColor : kLineColor);
    DrawArrow(dc, arrow, IsWindowEnabled(combo) ? kFieldTextColor : kGreyTextColor);
    const bool isOpen = SendMessageW(combo, CB_GETDROPPEDSTATE, 0, 0) != 0;
    InflateRect(&text, -1, -1);
    if (hasFocus && !isOpen)
        FillWith(dc, text, kHighlightColor);
    if (GetWindowLongW(combo, GWL_STYLE) & (CBS_OWNERDRAWFIXED | CBS_OWNERDRAWVARIABLE))
        return AskOwnerToDraw(combo, dc, text, hasFocus && !isOpen ? ODS_SELECTED : 0);
    Caption caption = {};
    caption.length = GetWindowTextW(combo, caption.text, kMostCaption);
    caption.underlined = -1;
    text.left += 2;
    DrawCaption(dc, combo, caption, text, hasFocus && !isOpen ? kHighlightTextColor : kFieldTextColor);
}
