#include "plugin/DialogRun.h"

#include "diag/ErrorReport.h"
#include "engine/InitializationTask.h"
#include "plugin/record/PluginState.h"
#include "resources/ResourceIds.h"
#include "storage/UISettings.h"
#include "ui/dialog/MainDialog.h"
#include "ui/display/PreviewDisplay.h"
#include "ui/window/ControlStyle.h"
#include "ui/window/DpiScope.h"
#include "ui/window/ModuleInstance.h"
#include "web/UpdateNotice.h"

#include <commctrl.h>

extern "C" INT_PTR CALLBACK BrillatrixProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

namespace {

// The host's profile, kept in place as long as the preview is made from it.
struct HostProfile {
    HostHandle handle; // locked; null: none
    const void *bytes;
    uint32_t size;
};

HostProfile LockHostProfile() {
    const FilterRecord &record = *gFilterRecord;
    const HandleProcs *procs = record.handleProcs;
    if (!record.canUseICCProfiles || !record.iCCprofileData || record.iCCprofileSize <= 0 || !procs ||
        !procs->lockProc || !procs->unlockProc)
        return {};
    if (procs->getSizeProc && procs->getSizeProc(record.iCCprofileData) < record.iCCprofileSize)
        return {};
    const void *bytes = procs->lockProc(record.iCCprofileData, 0);
    if (!bytes)
        return {};
    return {record.iCCprofileData, bytes, static_cast<uint32_t>(record.iCCprofileSize)};
}

void UnlockHostProfile(const HostProfile &profile) {
    if (profile.handle)
        gFilterRecord->handleProcs->unlockProc(profile.handle);
}

// The edit fields' class comes with its library. Without it the dialog opens all the same, with fields that
// the trackbars alone set.
HMODULE LoadControlClasses() {
    const INITCOMMONCONTROLSEX classes = {sizeof classes,
                                          ICC_BAR_CLASSES | ICC_PROGRESS_CLASS | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&classes);
    return LoadLibraryW(L"msftedit.dll");
}

// IDOK, IDCANCEL, or something else when it could not be opened.
INT_PTR OpenDialog() {
    const DpiCookie dpi = EnterDialogDpi();
    const ControlStyle style = EnterControlStyle();
    const HMODULE richEdit = LoadControlClasses();
    INT_PTR closed = -1;
    if (RegisterPreviewDisplayClass()) {
        closed = DialogBoxParamW(ModuleInstance(), kMainDialogName, static_cast<HWND>(ParentWindow()),
                                 BrillatrixProc, 0);
        UnregisterPreviewDisplayClass();
    }
    if (richEdit)
        FreeLibrary(richEdit);
    LeaveControlStyle(style);
    LeaveDialogDpi(dpi);
    return closed;
}

// The code of what ended the dialog other than OK: the user, or a failure of the light source table. Its task
// tells its code only when it ends, which may be after the dialog has.
HostResult ResultOfCancel() {
    if (*gResult != kNoError)
        return *gResult;
    if (gFatalErrorStatus == 0)
        return kUserCanceledErr;
    WaitLightSourceTable(nullptr, nullptr, INFINITE);
    return LightSourceTableResult() != kNoError ? LightSourceTableResult() : kUserCanceledErr;
}

} // namespace

HostResult RunDialog(const ImageBuffer &input) {
    if (!AreUISettingsLoaded())
        LoadUISettings();
    StartUpdateCheck();
    const ParameterSet before = *gParameters;
    const HostProfile profile = LockHostProfile();
    gDialogSubject = {gParameters, &input, profile.bytes, profile.size};
    const INT_PTR closed = OpenDialog();
    gDialogSubject = {};
    UnlockHostProfile(profile);
    *gDialogPending = 0;
    if (closed == IDOK)
        return kNoError;
    *gParameters = before; // the host may repeat the filter with them
    return ResultOfCancel();
}
