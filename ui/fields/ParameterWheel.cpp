#include "ui/fields/ParameterWheel.h"

#include "ui/fields/ParameterTable.h"
#include "ui/fields/ParameterValue.h"

#include <windowsx.h>

namespace {

bool IsOver(HWND control, POINT screen) {
    RECT rect = {};
    return GetWindowRect(control, &rect) && PtInRect(&rect, screen);
}

// Wheels that report parts of a turn step after a whole one; a rest of the other direction is forgotten.
int WholeTurns(ParameterControl *row, int delta) {
    if ((row->wheelRest > 0) != (delta > 0))
        row->wheelRest = 0;
    row->wheelRest += delta;
    const int turns = row->wheelRest / WHEEL_DELTA;
    row->wheelRest -= turns * WHEEL_DELTA;
    return turns;
}

} // namespace

bool OnParameterWheel(WPARAM wheel, LPARAM screenPoint) {
    const POINT screen = {GET_X_LPARAM(screenPoint), GET_Y_LPARAM(screenPoint)};
    for (ParameterControl &row : gParameterControls) {
        if (!IsBound(row) || !(IsOver(row.edit, screen) || IsOver(row.trackbar, screen)))
            continue;
        const int step = GET_KEYSTATE_WPARAM(wheel) & MK_CONTROL ? row.ctrlStep : row.arrowStep;
        if (const int turns = WholeTurns(&row, GET_WHEEL_DELTA_WPARAM(wheel)))
            StepParameterValue(&row, turns * step);
        return true;
    }
    return false;
}
