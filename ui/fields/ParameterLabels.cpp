#include "ui/fields/ParameterLabels.h"

#include "resources/DialogControlIds.h"
#include "ui/fields/ParameterTable.h"
#include "ui/fields/ParameterValue.h"

namespace {

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

} // namespace

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
