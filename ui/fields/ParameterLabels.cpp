#include "ui/fields/ParameterLabels.h"

#include "resources/DialogControlIds.h"
#include "ui/fields/ParameterTable.h"
#include "ui/fields/ParameterValue.h"

namespace {

constexpr UINT_PTR kRepeatTimer = 1;
constexpr UINT kFirstRepeatMs = 400, kRepeatMs = 60;

struct {
    ParameterControl *row; // null: none is pressed
    HWND picture;
    int direction;
} gPressed;

bool IsOver(HWND control, POINT screen) {
    RECT rect = {};
    return control && GetWindowRect(control, &rect) && PtInRect(&rect, screen);
}

// The names have no ids; each stands before its field in the template.
bool IsOverLabel(HWND dialog, int index, POINT screen) {
    const PairIds &ids = kPairIds[index];
    return IsOver(GetWindow(gParameterControls[index].edit, GW_HWNDPREV), screen) ||
           IsOver(GetDlgItem(dialog, ids.less), screen) || IsOver(GetDlgItem(dialog, ids.more), screen);
}

void StepToPressed() {
    ParameterControl *row = gPressed.row;
    if (!IsBound(*row))
        return;
    const int step = GetKeyState(VK_CONTROL) < 0 ? row->ctrlStep : row->arrowStep;
    StepParameterValue(row, gPressed.direction * step);
}

bool Press(HWND dialog, ParameterControl *row, HWND picture, int direction, POINT screen) {
    if (!IsOver(picture, screen))
        return false;
    gPressed = {row, picture, direction};
    SetCapture(dialog);
    SetTimer(dialog, kRepeatTimer, kFirstRepeatMs, nullptr);
    ++gFieldGesture;
    StepToPressed();
    return true;
}

} // namespace

bool OnParameterPicturePressed(HWND dialog, POINT client) {
    ClientToScreen(dialog, &client);
    for (int i = 0; i < kParameterControlCount; ++i) {
        ParameterControl *row = &gParameterControls[i];
        if (IsBound(*row) && (Press(dialog, row, GetDlgItem(dialog, kPairIds[i].less), -1, client) ||
                              Press(dialog, row, GetDlgItem(dialog, kPairIds[i].more), 1, client)))
            return true;
    }
    return false;
}

bool OnParameterPicture(int controlId) {
    for (int i = 0; i < kParameterControlCount; ++i) {
        ParameterControl &row = gParameterControls[i];
        const int direction = (controlId == kPairIds[i].more) - (controlId == kPairIds[i].less);
        if (direction == 0 || !IsBound(row))
            continue;
        ++gFieldGesture;
        StepParameterValue(&row, direction * row.arrowStep);
        ++gFieldGesture;
        return true;
    }
    return false;
}

bool OnParameterPictureTimer(HWND dialog, UINT_PTR timer) {
    if (timer != kRepeatTimer)
        return false;
    if (!gPressed.row) {
        KillTimer(dialog, kRepeatTimer);
        return true;
    }
    POINT pointer = {};
    if (GetCursorPos(&pointer) && IsOver(gPressed.picture, pointer))
        StepToPressed();
    SetTimer(dialog, kRepeatTimer, kRepeatMs, nullptr);
    return true;
}

bool OnParameterPictureReleased(HWND dialog) {
    if (!gPressed.row)
        return false;
    gPressed = {};
    KillTimer(dialog, kRepeatTimer);
    if (GetCapture() == dialog)
        ReleaseCapture();
    ++gFieldGesture;
    return true;
}

bool OnParameterLabelDoubleClick(HWND dialog, POINT client) {
    ClientToScreen(dialog, &client);
    for (int i = 0; i < kParameterControlCount; ++i) {
        ParameterControl &row = gParameterControls[i];
        if (!IsBound(row) || !IsOverLabel(dialog, i, client))
            continue;
        ++gFieldGesture;
        StepParameterValue(&row, row.defaultValue - TrackbarPosition(row));
        ++gFieldGesture;
        return true;
    }
    return false;
}
