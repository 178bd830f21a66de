#include "ui/dialog/DialogWheel.h"

#include "resources/DialogControlIds.h"
#include "ui/display/PreviewDisplayKeys.h"
#include "ui/fields/ParameterWheel.h"
#include "ui/window/DropDownList.h"

#include <initializer_list>

void OnDialogWheel(WPARAM wheel, LPARAM screenPoint) {
    if (!OnPreviewWheel(wheel, screenPoint))
        OnParameterWheel(wheel, screenPoint);
}

bool TakeWheel(HWND dialog, const MSG &message) {
    if (message.message != WM_MOUSEWHEEL || GetActiveWindow() != dialog)
        return false;
    for (const int combo : {kSettingsComboId, kEffectComboId})
        if (IsDropDownListOpen(GetDlgItem(dialog, combo)))
            return false;
    OnDialogWheel(message.wParam, message.lParam);
    return true;
}
