#include "ui/fields/ParameterControls.h"

#include "ui/fields/NumberText.h"
#include "ui/fields/ParameterEdit.h"
#include "ui/fields/ParameterEditPaint.h"
#include "ui/fields/ParameterTrackbar.h"
#include "ui/fields/ParameterValue.h"
#include "ui/window/Tooltips.h"

#include <algorithm>
#include <commctrl.h>
#include <cwchar>
#include <richedit.h>

namespace {

// A trackbar whose range reaches below zero is set to its minimum first, so that the thumb is redrawn.
void ShowRow(const ParameterControl &row) {
    *row.value = ClampToRow(row, *row.value);
    if (row.minimum < 0)
        MoveTrackbar(row, row.minimum);
    MoveTrackbar(row, *row.value);
    ShowParameterValue(row, *row.value);
}

// The plain field that stands in for the rich one knows only the older message.
void LimitText(const ParameterControl &row) {
    SendMessageW(row.edit, EM_EXLIMITTEXT, 0, row.textLimit);
    if (SendMessageW(row.edit, EM_GETLIMITTEXT, 0, 0) != row.textLimit)
        SendMessageW(row.edit, EM_LIMITTEXT, static_cast<WPARAM>(row.textLimit), 0);
}

void SetUpControls(ParameterControl *row) {
    row->editing = false;
    SendMessageW(row->edit, EM_SETTEXTMODE, TM_PLAINTEXT, 0);
    SubclassParameterEdit(row);
    SubclassParameterTrackbar(row);
    LimitText(*row);
    SendMessageA(row->trackbar, TBM_SETRANGE, TRUE,
                 MAKELPARAM(static_cast<WORD>(row->minimum), static_cast<WORD>(row->maximum)));
    SendMessageA(row->trackbar, TBM_SETPAGESIZE, 0, row->pageStep);
    SendMessageA(row->trackbar, TBM_SETLINESIZE, 0, row->arrowStep);
    UseParameterFont(row);
    SendMessageA(row->edit, EM_SETEVENTMASK, 0, ENM_CHANGE);
}

// What the user types is stored as soon as it is a new value; the text stays as typed.
void TakeTypedValue(ParameterControl *row, int16_t value) {
    if (value != *row->value) {
        *row->value = value;
        SendParameterChanged(*row);
    }
    MoveTrackbar(*row, value);
}

// Not every character comes as a message that can be refused: what is pasted, dropped or composed is in the
// field by now. The caret stays between the characters that it stood between.
void CleanText(const ParameterControl &row) {
    wchar_t text[kNumberTextCapacity] = L"", clean[kNumberTextCapacity];
    GetWindowTextW(row.edit, text, kNumberTextCapacity);
    wcscpy(clean, text);
    KeepNumberCharacters(clean);
    if (wcscmp(text, clean) == 0)
        return;
    DWORD caret = 0;
    SendMessageW(row.edit, EM_GETSEL, 0, reinterpret_cast<LPARAM>(&caret));
    text[std::min<size_t>(caret, kNumberTextCapacity - 1)] = L'\0';
    caret = static_cast<DWORD>(KeepNumberCharacters(text));
    SetEditText(row, clean);
    SendMessageW(row.edit, EM_SETSEL, caret, caret);
}

void OnEditChanged(ParameterControl *row) {
    if (row->composing)
        return;
    CleanText(*row);
    char text[kNumberTextCapacity] = "";
    GetWindowTextA(row->edit, text, sizeof text);
    // A text that holds no number yet, such as a lone minus sign, changes nothing.
    int32_t value = *row->value;
    ParseScaledNumber(text, row->decimals, &value);
    if (row->editing)
        TakeTypedValue(row, ClampToRow(*row, value));
    InvalidateRect(row->edit, nullptr, FALSE);
}

} // namespace

void RegisterParameterTooltips(HWND dialog, HWND tooltipWindow) {
    for (const ParameterControl &row : gParameterControls) {
        AddTooltip(dialog, tooltipWindow, row.editId, row.editTooltip);
        AddTooltip(dialog, tooltipWindow, row.trackbarId, row.trackbarTooltip);
    }
}

void BindParameterControl(HWND dialog, ParameterControl *row, int16_t *value) {
    const HWND edit = GetDlgItem(dialog, row->editId), trackbar = GetDlgItem(dialog, row->trackbarId);
    row->value = value;
    row->edit = edit && trackbar ? edit : nullptr;
    row->trackbar = edit && trackbar ? trackbar : nullptr;
    if (!row->edit) {
        *value = row->defaultValue;
        return;
    }
    SetUpControls(row);
    ShowRow(*row);
}

void BindParameterControls(HWND dialog, ParameterSet *parameters) {
    for (int i = 0; i < kParameterControlCount; ++i)
        BindParameterControl(dialog, &gParameterControls[i], &(parameters->*kParameterFields[i]));
}

void RefreshParameterControls() {
    for (const ParameterControl &row : gParameterControls) {
        if (IsBound(row))
            ShowRow(row);
        else if (row.value)
            *row.value = row.defaultValue;
    }
}

bool OnParameterEditChanged(int editId) {
    for (ParameterControl &row : gParameterControls) {
        if (row.editId != editId)
            continue;
        if (IsBound(row))
            OnEditChanged(&row);
        return true;
    }
    return false;
}

void FocusParameterControl(int index) {
    if (index < 0 || index >= kParameterControlCount || !IsBound(gParameterControls[index]))
        return;
    const HWND edit = gParameterControls[index].edit;
    SendMessageA(GetParent(edit), WM_UPDATEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS | UISF_HIDEACCEL),
                 0);
    SetFocus(edit);
    SelectEditText(gParameterControls[index]); // also where the focus was there already
}
