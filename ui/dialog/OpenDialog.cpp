#include "ui/dialog/OpenDialog.h"

#include "diag/module/ModuleInstance.h"
#include "resources/DialogControlIds.h"
#include "ui/dialog/MainDialog.h"
#include "ui/display/PreviewDisplay.h"
#include "ui/fields/FieldClass.h"
#include "ui/window/ControlStyle.h"
#include "ui/window/DpiScope.h"

#include <commctrl.h>

namespace {

void LoadControlClasses() {
    const INITCOMMONCONTROLSEX classes = {sizeof classes,
                                          ICC_BAR_CLASSES | ICC_PROGRESS_CLASS | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&classes);
}

// IDOK, IDCANCEL, or something else when it could not be opened.
INT_PTR RunDialogBox(HWND owner) {
    if (!RegisterPreviewDisplayClass())
        return -1;
    const INT_PTR closed = DialogBoxParamW(ModuleInstance(), kMainDialogName, owner, BrillatrixProc, 0);
    UnregisterPreviewDisplayClass();
    return closed;
}

} // namespace

DialogEnd OpenDialog(HWND owner, const DialogSubject &subject) {
    gDialogSubject = subject;
    const DpiCookie dpi = EnterDialogDpi();
    const ControlStyle style = EnterControlStyle();
    LoadControlClasses();
    const FieldClass fieldClass = EnterFieldClass();
    const INT_PTR closed = RunDialogBox(owner);
    LeaveFieldClass(fieldClass);
    LeaveControlStyle(style);
    LeaveDialogDpi(dpi);
    const bool isCancelled = gDialogSubject.isCancelled;
    gDialogSubject = {};
    if (closed == IDOK)
        return DialogEnd::ok;
    return isCancelled ? DialogEnd::cancelled : DialogEnd::failed;
}
