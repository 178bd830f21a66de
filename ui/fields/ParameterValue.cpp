#include "ui/fields/ParameterValue.h"

#include "ui/fields/NumberText.h"
#include "ui/window/DialogMessages.h"

#include <algorithm>

#include <commctrl.h>
#include <richedit.h>

uint32_t gFieldGesture = 0;

int16_t ClampToRow(const ParameterControl &row, int32_t value) {
    return static_cast<int16_t>(
        std::clamp(value, static_cast<int32_t>(row.minimum), static_cast<int32_t>(row.maximum)));
}

// Without ENM_CHANGE the update does not come back as something the user typed.
void SetEditText(const ParameterControl &row, const wchar_t *text) {
    const LRESULT mask = SendMessageW(row.edit, EM_GETEVENTMASK, 0, 0);
    SendMessageW(row.edit, EM_SETEVENTMASK, 0, mask & ~static_cast<LRESULT>(ENM_CHANGE));
    SetWindowTextW(row.edit, text);
    SendMessageW(row.edit, EM_SETEVENTMASK, 0, mask);
}

void ShowParameterValue(const ParameterControl &row, int32_t value) {
    if (value < row.minimum || value > row.maximum)
        return;
    char digits[kNumberTextCapacity];
    FormatScaledNumber(value, row.decimals, digits, sizeof digits);
    wchar_t text[kNumberTextCapacity];
    std::copy_n(digits, kNumberTextCapacity, text);
    SetEditText(row, text);
    if (row.editing)
        SelectEditText(row);
    InvalidateRect(row.edit, nullptr, FALSE);
}

void SelectEditText(const ParameterControl &row) {
    SendMessageA(row.edit, EM_SETSEL, 0, -1);
}

int32_t TrackbarPosition(const ParameterControl &row) {
    return static_cast<int32_t>(SendMessageA(row.trackbar, TBM_GETPOS, 0, 0));
}

void MoveTrackbar(const ParameterControl &row, int32_t value) {
    SendMessageA(row.trackbar, TBM_SETPOS, TRUE, value);
}

void TakeParameterValue(ParameterControl *row, int32_t value) {
    *row->value = ClampToRow(*row, value);
    ShowParameterValue(*row, *row->value);
    SendParameterChanged(*row);
}

void SendParameterChanged(const ParameterControl &row) {
    SendMessageA(GetParent(row.edit), kMsgParameterChanged, 0, 0);
}

void StepParameterValue(ParameterControl *row, int32_t amount) {
    MoveTrackbar(*row, ClampToRow(*row, TrackbarPosition(*row) + amount));
    const int32_t position = TrackbarPosition(*row);
    if (position != *row->value)
        TakeParameterValue(row, position);
}
