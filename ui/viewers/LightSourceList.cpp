#include "ui/viewers/LightSourceList.h"

#include "diag/BufferUsage.h"
#include "diag/ErrorReport.h"
#include "engine/table/LightSourceTable.h"
#include "engine/table/LightSourceText.h"
#include "ui/viewers/ClipboardCopy.h"

#include <algorithm>
#include <commctrl.h>
#include <cstdint>
#include <cstring>

namespace {

constexpr uint32_t kSiteGather = 613, kSiteTooLong = 628, kSiteSubclass = 590;
constexpr UINT_PTR kSubclassId = 1;
constexpr WPARAM kSelectAllChar = 1, kCopyChar = 3; // Ctrl+A and Ctrl+C
constexpr LPARAM kReleasedBits = 0xC0000000;        // of a key's data: it was down, and goes up
constexpr int kItemCapacity = 4096;                 // of an item's text, terminator included
constexpr LRESULT kLargestRangeItem = 0xFFFF;       // LB_SELITEMRANGE tells items in 16 bits
constexpr size_t kGrowth = 65536;
constexpr size_t kLineBytes = 96; // of a usual line, for the list box's forecast

bool gCtrlDown;      // the key went down in the list box and has not gone up since
LPARAM gCtrlKeyData; // of its first press

// The selection's text while it is gathered. Owner of `text`: GatherSelection's caller, which frees it.
struct SelectionText {
    char *text;
    size_t length, allocated; // bytes
};

void FreeSelectionText(SelectionText *selection) {
    CountedFree(selection->text, selection->allocated);
    *selection = SelectionText{};
}

void ReportNoMemory() {
    ReportError({kSiteGather, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                "Could not allocate memory for the selection.");
}

// False, reported, when memory ran out.
bool AppendText(const char *text, size_t length, SelectionText *selection) {
    if (selection->allocated - selection->length < length) {
        const size_t grown = selection->allocated * 2 + length + kGrowth;
        void *moved = CountedRealloc(selection->text, selection->allocated, grown);
        if (!moved) {
            ReportNoMemory();
            return false;
        }
        selection->text = static_cast<char *>(moved);
        selection->allocated = grown;
    }
    memcpy(selection->text + selection->length, text, length);
    selection->length += length;
    return true;
}

// Asks the list box itself, past its subclasses: they cost far more than the answer, and there may be tens of
// thousands to ask for.
LRESULT AskList(HWND list, UINT message, WPARAM wParam, void *answer) {
    const auto procedure = reinterpret_cast<WNDPROC>(GetClassLongPtrA(list, GCLP_WNDPROC));
    return CallWindowProcA(procedure, list, message, wParam, reinterpret_cast<LPARAM>(answer));
}

// False, reported, when memory ran out. An item that is too long ends the gathering, and what came before it
// stays.
bool GatherItems(HWND list, const int *items, int count, SelectionText *selection) {
    char item[kItemCapacity + 2]; // and a line end in place of the terminator
    for (int i = 0; i < count; ++i) {
        const auto index = static_cast<WPARAM>(items[i]);
        if (AskList(list, LB_GETTEXTLEN, index, nullptr) >= kItemCapacity) {
            ReportError({kSiteTooLong, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                        "ListBox Item %d is too long.", items[i]);
            break;
        }
        const LRESULT length = AskList(list, LB_GETTEXT, index, item);
        if (length < 0)
            break;
        item[length] = '\r';
        item[length + 1] = '\n';
        if (!AppendText(item, static_cast<size_t>(length) + 2, selection))
            return false;
    }
    return AppendText("", 1, selection);
}

bool GatherSelection(HWND list, int count, SelectionText *selection) {
    const size_t bytes = static_cast<size_t>(count) * sizeof(int);
    auto *items = static_cast<int *>(CountedAlloc(bytes));
    if (!items) {
        ReportNoMemory();
        return false;
    }
    const LRESULT given =
        SendMessageA(list, LB_GETSELITEMS, static_cast<WPARAM>(count), reinterpret_cast<LPARAM>(items));
    const bool gathered = GatherItems(list, items, std::clamp(static_cast<int>(given), 0, count), selection);
    CountedFree(items, bytes);
    return gathered;
}

// Without a selection the clipboard keeps what it holds.
void CopySelection(HWND list) {
    const LRESULT count = SendMessageA(list, LB_GETSELCOUNT, 0, 0);
    if (count <= 0)
        return;
    SelectionText selection{};
    if (GatherSelection(list, static_cast<int>(count), &selection)) {
        const ClipboardPart text = {selection.text, selection.length};
        CopyToClipboard(list, CF_TEXT, "text", &text, 1);
    }
    FreeSelectionText(&selection);
}

void SelectEveryItem(HWND list) {
    const LRESULT last = SendMessageA(list, LB_GETCOUNT, 0, 0) - 1;
    if (last < 0)
        return;
    if (last <= kLargestRangeItem)
        SendMessageA(list, LB_SELITEMRANGE, TRUE, static_cast<LPARAM>(last << 16));
    else
        SendMessageA(list, LB_SELITEMRANGEEX, 0, last);
}

// The list box did not see the key go down, and sees the whole chord now.
LRESULT PassChord(HWND list, WPARAM character, LPARAM keyData) {
    DefSubclassProc(list, WM_KEYDOWN, VK_CONTROL, gCtrlKeyData);
    const LRESULT result = DefSubclassProc(list, WM_CHAR, character, keyData);
    DefSubclassProc(list, WM_KEYUP, VK_CONTROL, gCtrlKeyData | kReleasedBits);
    return result;
}

LRESULT HandleCtrlChar(HWND list, WPARAM character, LPARAM keyData) {
    switch (character) {
    case kSelectAllChar:
        SelectEveryItem(list);
        return 0;
    case kCopyChar:
        CopySelection(list);
        return 0;
    default:
        return PassChord(list, character, keyData);
    }
}

void PressCtrl(LPARAM keyData) {
    if (!gCtrlDown)
        gCtrlKeyData = keyData;
    gCtrlDown = true;
}

LRESULT CALLBACK ListProc(HWND list, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id, DWORD_PTR) {
    switch (message) {
    case WM_KEYDOWN:
        if (wParam != VK_CONTROL)
            break;
        PressCtrl(lParam);
        return 0;
    case WM_KEYUP:
        if (wParam != VK_CONTROL)
            break;
        gCtrlDown = false;
        return 0;
    case WM_CHAR:
        if (gCtrlDown)
            return HandleCtrlChar(list, wParam, lParam);
        break;
    case WM_KILLFOCUS: // the key goes up somewhere else
        gCtrlDown = false;
        break;
    case WM_NCDESTROY:
        RemoveWindowSubclass(list, ListProc, id);
        break;
    default:
        break;
    }
    return DefSubclassProc(list, message, wParam, lParam);
}

// The list box scrolls sideways as far as its longest line goes.
void SetScrollWidth(HWND list, const char *longestLine) {
    constexpr WPARAM kMargin = 8; // pixels
    const HDC dc = GetDC(list);
    if (!dc)
        return;
    const HGDIOBJ font = reinterpret_cast<HGDIOBJ>(SendMessageA(list, WM_GETFONT, 0, 0));
    const HGDIOBJ before = font ? SelectObject(dc, font) : nullptr;
    SIZE size = {};
    GetTextExtentPoint32A(dc, longestLine, static_cast<int>(strlen(longestLine)), &size);
    if (before)
        SelectObject(dc, before);
    ReleaseDC(list, dc);
    SendMessageA(list, LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(size.cx) + kMargin, 0);
}

} // namespace

void AttachLightSourceList(HWND list) {
    gCtrlDown = false;
    if (!SetWindowSubclass(list, ListProc, kSubclassId, 0))
        ReportError({kSiteSubclass, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "Could not subclass the light source list.");
}

// Room is made once, and nothing is drawn meanwhile: every line by itself would cost a new layout.
void FillLightSourceList(HWND list, uint32_t count) {
    char longest[256] = "";
    size_t longestLength = 0;
    SendMessageA(list, WM_SETREDRAW, FALSE, 0);
    SendMessageA(list, LB_INITSTORAGE, count, static_cast<LPARAM>(count * kLineBytes));
    while (const char *line = FormatLightSourceTableLine(false)) {
        if (SendMessageA(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line)) < 0)
            break;
        const size_t length = strlen(line);
        if (length > longestLength && length < sizeof longest) {
            memcpy(longest, line, length + 1);
            longestLength = length;
        }
    }
    SetScrollWidth(list, longest);
    SendMessageA(list, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(list, nullptr, TRUE);
}
