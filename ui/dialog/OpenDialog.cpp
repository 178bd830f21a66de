#include "ui/dialog/OpenDialog.h"

#include "resources/DialogControlIds.h"
#include "ui/dialog/MainDialog.h"
#include "ui/display/PreviewDisplay.h"
#include "ui/window/ControlStyle.h"
#include "ui/window/DpiScope.h"
#include "ui/window/ModuleInstance.h"

#include <commctrl.h>

namespace {

// The edit fields' class comes with its library. Without it the dialog opens all the same, with fields that
// the trackbars alone set.
HMODULE LoadControlClasses() {
    const INITCOMMONCONTROLSEX classes = {sizeof classes,
                                          ICC_BAR_CLASSES | ICC_PROGRESS_CLASS | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&classes);
    return LoadLibraryW(L"msftedit.dll");
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
    const HMODULE richEdit = LoadControlClasses();
    const INT_PTR closed = RunDialogBox(owner);
    if (richEdit)
        FreeLibrary(richEdit);
    LeaveControlStyle(style);
    LeaveDialogDpi(dpi);
    const bool isCancelled = gDialogSubject.isCancelled;
    gDialogSubject = {};
    if (closed == IDOK)
        return DialogEnd::ok;
    return isCancelled ? DialogEnd::cancelled : DialogEnd::failed;
}
