#include "ui/fields/ParameterEdit.h"

#include "ui/fields/NumberText.h"
#include "ui/fields/ParameterEditPaint.h"
#include "ui/fields/ParameterValue.h"
#include "ui/window/ForgedMessages.h"

#include <algorithm>
#include <iterator>

#include <commctrl.h>

namespace {

constexpr UINT_PTR kEditSubclassId = 1;
constexpr WPARAM kDeleteCharacter = 127; // what Ctrl+Backspace sends

// Some versions of the control draw a new caret place or selection at once instead of waiting for WM_PAINT.
bool MayHaveDrawn(UINT message, WPARAM wParam) {
    if (message == WM_MOUSEMOVE)
        return (wParam & MK_LBUTTON) != 0;
    return (message >= WM_KEYFIRST && message <= WM_KEYLAST) ||
           (message >= WM_MOUSEFIRST && message <= WM_MOUSELAST);
}

// The click that brings the focus selects the number, as it looks; the control would put the caret where the
// pointer is and let go of the selection.
bool TakeFirstClick(const ParameterControl &row) {
    if (GetFocus() == row.edit)
        return false;
    SetFocus(row.edit);
    return true;
}

// With Ctrl the control aligns and spaces text, raises digits, and some versions show what they hold, in a
// box: nothing for a number. All but copying, cutting, pasting and undoing ends here.
bool IsTextSettingKey(WPARAM key) {
    constexpr WPARAM kEditing[] = {'A', 'C', 'V', 'X', 'Y', 'Z'};
    const bool isCharacter = (key >= '0' && key <= '9') || (key >= 'A' && key <= 'Z') ||
                             (key >= VK_OEM_1 && key <= VK_OEM_3) || (key >= VK_OEM_4 && key <= VK_OEM_8);
    return isCharacter && std::find(std::begin(kEditing), std::end(kEditing), key) == std::end(kEditing);
}

LRESULT CALLBACK EditProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR data) {
    ParameterControl *row = reinterpret_cast<ParameterControl *>(data);
    if (IsForgedDestruction(window, message))
        return 0;
    if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(window, EditProc, kEditSubclassId);
        if (row->edit == window)
            UnbindParameterControl(row);
        return DefSubclassProc(window, message, wParam, lParam);
    }
    if (row->edit != window || !IsBound(*row))
        return DefSubclassProc(window, message, wParam, lParam);
    if (message == WM_ERASEBKGND)
        return 1;
    if (message == WM_PAINT) {
        PaintParameterEdit(*row);
        return 0;
    }
    if (message == WM_KEYDOWN && OnEditKey(row, wParam, LOWORD(lParam), GetKeyState(VK_CONTROL) < 0))
        return 0;
    constexpr WPARAM kLastPlain = 127;
    if (message == WM_CHAR && wParam > kLastPlain) // a full-width digit is the digit
        if (const wchar_t plain = NumberCharacter(static_cast<wchar_t>(wParam)))
            wParam = plain;
    if (message == WM_IME_STARTCOMPOSITION || message == WM_IME_ENDCOMPOSITION)
        row->composing = message == WM_IME_STARTCOMPOSITION;
    if (message == WM_CHAR && !OnEditCharacter(wParam))
        return 0;
    if (message == WM_MOUSEWHEEL) // the dialog knows what lies under the pointer
        return SendMessageW(GetParent(window), message, wParam, lParam);
    if (message == WM_LBUTTONDOWN && TakeFirstClick(*row))
        return 0;
    const LRESULT result = DefSubclassProc(window, message, wParam, lParam);
    if (!IsBound(*row))
        return result;
    if (message == WM_SETFOCUS)
        OnEditSetFocus(row);
    else if (message == WM_KILLFOCUS)
        OnEditKillFocus(row);
    else if (message == WM_IME_ENDCOMPOSITION) // what it left in the field counts now
        SendMessageW(GetParent(window), WM_COMMAND, MAKEWPARAM(row->editId, EN_CHANGE),
                     reinterpret_cast<LPARAM>(window));
    else if (MayHaveDrawn(message, wParam))
        InvalidateRect(window, nullptr, FALSE);
    return result;
}

} // namespace

void SubclassParameterEdit(ParameterControl *row) {
    SetWindowSubclass(row->edit, EditProc, kEditSubclassId, reinterpret_cast<DWORD_PTR>(row));
}

void OnEditSetFocus(ParameterControl *row) {
    ++gFieldGesture;
    row->editing = true;
    SelectEditText(*row);
    InvalidateRect(row->edit, nullptr, FALSE);
}

void OnEditKillFocus(ParameterControl *row) {
    row->editing = row->composing = false;
    ShowParameterValue(*row, *row->value);
}

bool OnEditKey(ParameterControl *row, WPARAM key, int repeatCount, bool ctrlDown) {
    const int32_t arrow = ctrlDown ? row->ctrlStep : row->arrowStep;
    switch (key) {
    case VK_PRIOR:
        StepParameterValue(row, row->pageStep * repeatCount);
        return true;
    case VK_NEXT:
        StepParameterValue(row, -row->pageStep * repeatCount);
        return true;
    case VK_UP:
        StepParameterValue(row, arrow * repeatCount);
        return true;
    case VK_DOWN:
        StepParameterValue(row, -arrow * repeatCount);
        return true;
    default:
        return ctrlDown && IsTextSettingKey(key);
    }
}

bool OnEditCharacter(WPARAM character) {
    if ((character >= '0' && character <= '9') || character == '.' || character == '-' || character == '+' ||
        character == VK_BACK)
        return true;
    // Tab, and the codes that follow Enter, Esc, Ctrl+C and the like: their keys have been acted on already.
    if (character < ' ' || character == kDeleteCharacter)
        return false;
    MessageBeep(MB_ICONHAND);
    return false;
}

void UnbindParameterControl(ParameterControl *row) {
    row->editing = false;
    row->value = nullptr;
    row->edit = row->trackbar = nullptr;
    row->font = nullptr;
    const bool anyLeft = std::any_of(std::begin(gParameterControls), std::end(gParameterControls),
                                     [](const ParameterControl &other) { return other.edit != nullptr; });
    if (anyLeft)
        return;
    for (ParameterControl &other : gParameterControls)
        other.value = nullptr;
    DeleteParameterFont();
}
