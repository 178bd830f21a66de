#include "plugin/record/HostHandles.h"

#include "plugin/record/HostCall.h"
#include "plugin/record/PluginState.h"
#include "render/ParameterSet.h"

#include <windows.h>

namespace {

constexpr int32_t kParametersHandleSize = sizeof(ParameterSet);
constexpr int32_t kDataHandleSize = 1;
constexpr HostBoolean kMoveHigh = 1;

HostHandle ParametersHandle() {
    return gFilterRecord->parameters;
}

HostHandle DataHandle() {
    return gData ? reinterpret_cast<HostHandle>(*gData) : nullptr;
}

HostHandle NewHandle(int32_t size) {
    const HandleProcs *procs = gFilterRecord->handleProcs;
    return procs && procs->newProc ? CallHost(procs->newProc, size) : nullptr;
}

void DisposeHandle(HostHandle handle) {
    const HandleProcs *procs = gFilterRecord->handleProcs;
    if (handle && procs && procs->disposeProc)
        CallHost(procs->disposeProc, handle);
}

char *LockHandle(HostHandle handle) {
    const HandleProcs *procs = gFilterRecord->handleProcs;
    return procs && procs->lockProc ? CallHost(procs->lockProc, handle, kMoveHigh) : nullptr;
}

void UnlockHandle(HostHandle handle) {
    const HandleProcs *procs = gFilterRecord->handleProcs;
    if (handle && procs && procs->unlockProc)
        CallHost(procs->unlockProc, handle);
}

// A handle of a foreign size may have moved here from another filter or an older version: it is replaced.
HostResult MakeParametersHandle() {
    if (IsHandleUsable(ParametersHandle(), kParametersHandleSize))
        return kNoError;
    DisposeHandle(ParametersHandle());
    gFilterRecord->parameters = NewHandle(kParametersHandleSize);
    return gFilterRecord->parameters ? kNoError : kMemFullErr;
}

HostResult MakeDataHandle() {
    if (IsHandleUsable(DataHandle(), kDataHandleSize))
        return kNoError;
    if (!gData)
        return kFilterBadParameters;
    DisposeHandle(DataHandle());
    const HostHandle handle = NewHandle(kDataHandleSize);
    *gData = reinterpret_cast<intptr_t>(handle);
    return handle ? kNoError : kMemFullErr;
}

// A handle that was made and never filled in would pass for one of an earlier run.
void DropHandles() {
    DisposeHandle(ParametersHandle());
    gFilterRecord->parameters = nullptr;
    DisposeHandle(DataHandle());
    if (gData)
        *gData = 0;
}

} // namespace

// Hosts without the size procedure, and those whose procedure answers 0 for handles of their own, do not
// know.
bool IsHandleUsable(HostHandle handle, int32_t size) {
    if (!handle)
        return false;
    const HandleProcs *procs = gFilterRecord->handleProcs;
    if (!procs || !procs->getSizeProc)
        return true;
    const int32_t answer = CallHost(procs->getSizeProc, handle);
    return answer <= 0 || answer >= size;
}

bool HaveBothHandles() {
    return IsHandleUsable(ParametersHandle(), kParametersHandleSize) &&
           IsHandleUsable(DataHandle(), kDataHandleSize);
}

HostResult LockHandles() {
    if (!HaveBothHandles())
        return kFilterBadParameters;
    if (!gFilterRecord->handleProcs)
        return kErrPlugInHostInsufficient;
    gParameters = reinterpret_cast<ParameterSet *>(LockHandle(ParametersHandle()));
    gDialogPending = reinterpret_cast<uint8_t *>(LockHandle(DataHandle()));
    return gParameters && gDialogPending ? kNoError : kMemFullErr;
}

void UnlockHandles() {
    if (gDialogPending)
        UnlockHandle(DataHandle());
    if (gParameters)
        UnlockHandle(ParametersHandle());
    gDialogPending = nullptr;
    gParameters = nullptr;
}

HostResult SetUpHandles() {
    if (!gFilterRecord->handleProcs)
        return kErrPlugInHostInsufficient;
    HostResult result = MakeParametersHandle();
    if (const HostResult dataResult = MakeDataHandle())
        result = dataResult;
    if (result == kNoError)
        result = LockHandles();
    if (result != kNoError) {
        UnlockHandles();
        DropHandles();
        return result;
    }
    *gParameters = kDefaultParameters;
    *gDialogPending = 1;
    PlatformData *platform = gFilterRecord->platformData;
    if (platform && !platform->hwnd)
        platform->hwnd = GetActiveWindow();
    return kNoError;
}
