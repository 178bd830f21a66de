#include "ui/about/LinkButton.h"

#include "ui/window/Palette.h"

#include <algorithm>
#include <commctrl.h>

namespace {

constexpr UINT_PTR kSubclassId = 1;
constexpr int kMostText = 256;
constexpr int kLeastContrast = 400; // of 1000 levels of brightness

// Of a colour, 0 to 1000, as bright as the eye finds it.
int Brightness(COLORREF color) {
    return (GetRValue(color) * 299 + GetGValue(color) * 587 + GetBValue(color) * 114) / 255;
}

// The system's colour of links, but where a theme makes it nearly that of the dialog, the colour of text:
// what it is can still be told by its line.
COLORREF LinkColor() {
    const COLORREF color = ColorOf(kLinkColor), face = ColorOf(kFaceColor);
    const int difference = Brightness(color) - Brightness(face);
    const bool canBeRead = difference >= kLeastContrast || difference <= -kLeastContrast;
    return canBeRead ? color : ColorOf(kTextColor);
}

// The button's own font, underlined. Null without memory.
HFONT MakeLinkFont(HWND button) {
    LOGFONTA font;
    const HFONT plain = reinterpret_cast<HFONT>(SendMessageA(button, WM_GETFONT, 0, 0));
    if (!plain || !GetObjectA(plain, sizeof font, &font))
        return nullptr;
    font.lfUnderline = TRUE;
    return CreateFontIndirectA(&font);
}

struct LinkText {
    char text[kMostText];
    int length;
};

LinkText TextOf(HWND button) {
    LinkText link = {};
    link.length = GetWindowTextA(button, link.text, kMostText);
    return link;
}

void DrawLinkText(HDC context, const RECT &area, const LinkText &link, bool hasFocus) {
    SIZE size = {};
    GetTextExtentPoint32A(context, link.text, link.length, &size);
    RECT text = {area.left + 1, area.top, std::min(area.right, area.left + 1 + size.cx), area.bottom};
    DrawTextA(context, link.text, link.length, &text,
              DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
    if (!hasFocus)
        return;
    InflateRect(&text, 1, 0);
    SetTextColor(context, ColorOf(kTextColor));
    DrawFocusRect(context, &text);
}

// Enter follows the link: the dialog would take it for a press of its default button.
LRESULT CALLBACK LinkProc(HWND button, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id, DWORD_PTR) {
    switch (message) {
    case WM_SETCURSOR:
        SetCursor(LoadCursorA(nullptr, IDC_HAND));
        return TRUE;
    case WM_GETDLGCODE:
        return DefSubclassProc(button, message, wParam, lParam) |
               (wParam == VK_RETURN ? DLGC_WANTMESSAGE : 0);
    case WM_KEYDOWN:
        if (wParam != VK_RETURN)
            break;
        SendMessageA(GetParent(button), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(button), BN_CLICKED),
                     reinterpret_cast<LPARAM>(button));
        return 0;
    case WM_NCDESTROY:
        RemoveWindowSubclass(button, LinkProc, id);
        break;
    default:
        break;
    }
    return DefSubclassProc(button, message, wParam, lParam);
}

} // namespace

void SetLinkText(HWND button, const char *text) {
    SetWindowSubclass(button, LinkProc, kSubclassId, 0);
    SetWindowTextA(button, text);
    const LinkText link = TextOf(button);
    const HFONT font = MakeLinkFont(button);
    const HDC context = GetDC(button);
    RECT area = {};
    SIZE size = {};
    GetClientRect(button, &area);
    if (font && context) {
        const HGDIOBJ old = SelectObject(context, font);
        GetTextExtentPoint32A(context, link.text, link.length, &size);
        SelectObject(context, old);
        SetWindowPos(button, nullptr, 0, 0, static_cast<int>(std::min(area.right, size.cx + 2)), area.bottom,
                     SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
    if (context)
        ReleaseDC(button, context);
    if (font)
        DeleteObject(font);
}

void DrawLink(const DRAWITEMSTRUCT &item) {
    const HFONT font = MakeLinkFont(item.hwndItem);
    const int saved = SaveDC(item.hDC);
    if (font)
        SelectObject(item.hDC, font);
    FillWith(item.hDC, item.rcItem, kFaceColor);
    SetBkMode(item.hDC, TRANSPARENT);
    SetTextColor(item.hDC, LinkColor());
    DrawLinkText(item.hDC, item.rcItem, TextOf(item.hwndItem),
                 (item.itemState & ODS_FOCUS) && !(item.itemState & ODS_NOFOCUSRECT));
    RestoreDC(item.hDC, saved);
    if (font)
        DeleteObject(font);
}
