#include "ui/dialog/CheckBoxBindings.h"

#include "resources/DialogControlIds.h"
#include "ui/window/DialogMessages.h"

namespace {

struct CheckBoxBinding {
    int controlId;
    uint8_t *flag; // 0 or 1; null while no dialog shows the box
};

CheckBoxBinding gCheckBoxes[] = {{kEffectsOnlyId, nullptr}};

} // namespace

void BindCheckBoxes(HWND dialog, ParameterSet *parameters) {
    gCheckBoxes[0].flag = &parameters->outputSpikesOnly;
    RefreshCheckBoxes(dialog);
}

void RefreshCheckBoxes(HWND dialog) {
    for (const CheckBoxBinding &box : gCheckBoxes)
        if (box.flag)
            CheckDlgButton(dialog, box.controlId, *box.flag ? BST_CHECKED : BST_UNCHECKED);
}

bool OnCheckBoxClicked(HWND dialog, int controlId) {
    for (const CheckBoxBinding &box : gCheckBoxes) {
        if (box.controlId != controlId || !box.flag)
            continue;
        const uint8_t state = IsDlgButtonChecked(dialog, controlId) == BST_CHECKED;
        if (state != *box.flag) {
            *box.flag = state;
            SendMessageW(dialog, kMsgParameterChanged, 0, 0);
        }
        return true;
    }
    return false;
}

void ReleaseCheckBoxes() {
    for (CheckBoxBinding &box : gCheckBoxes)
        box.flag = nullptr;
}
