#include "plugin/DialogRun.h"

#include "diag/ErrorReport.h"
#include "engine/InitializationTask.h"
#include "plugin/record/HostCall.h"
#include "plugin/record/HostHandles.h"
#include "plugin/record/PluginState.h"
#include "storage/UISettings.h"
#include "ui/dialog/OpenDialog.h"
#include "web/UpdateNotice.h"

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
    if (!IsHandleUsable(record.iCCprofileData, record.iCCprofileSize))
        return {};
    const void *bytes = CallHost(procs->lockProc, HostHandle{record.iCCprofileData}, HostBoolean{0});
    if (!bytes)
        return {};
    return {record.iCCprofileData, bytes, static_cast<uint32_t>(record.iCCprofileSize)};
}

void UnlockHostProfile(const HostProfile &profile) {
    if (profile.handle)
        CallHost(gFilterRecord->handleProcs->unlockProc, profile.handle);
}

// The code of what ended the dialog other than OK: the user, or a failure of the light source table. Its task
// tells its code only when it ends, which may be after the dialog has: nobody needs the rest of its table.
HostResult ResultOfCancel(DialogEnd end) {
    if (const HostResult result = HostFailure())
        return result;
    if (end == DialogEnd::cancelled || gFatalErrorStatus == 0)
        return kUserCanceledErr;
    CancelLightSourceTableInit();
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
    const DialogEnd end = HostFailure() == kNoError
                              ? OpenDialog(static_cast<HWND>(ParentWindow()),
                                           {gParameters, &input, profile.bytes, profile.size, false})
                              : DialogEnd::cancelled;
    UnlockHostProfile(profile);
    *gDialogPending = 0;
    if (end == DialogEnd::ok)
        return kNoError;
    *gParameters = before; // the host may repeat the filter with them
    return ResultOfCancel(end);
}
