#include "plugin/record/HostHandles.h"

#include "plugin/record/PluginState.h"
#include "render/ParameterSet.h"

#include <windows.h>

namespace {

constexpr int32_t kParametersHandleSize = sizeof(ParameterSet);
constexpr int32_t kDataHandleSize = 1;

HostHandle ParametersHandle() {
    return gFilterRecord->parameters;
}

HostHandle DataHandle() {
    return gData ? reinterpret_cast<HostHandle>(*gData) : nullptr;
}

// A host without the size procedure is believed: it made the handle for this filter.
bool IsHandleUsable(HostHandle handle, int32_t size) {
    if (!handle)
        return false;
    const HandleProcs *procs = gFilterRecord->handleProcs;
    return !procs || !procs->getSizeProc || procs->getSizeProc(handle) >= size;
}

HostHandle NewHandle(int32_t size) {
    const HandleProcs *procs = gFilterRecord->handleProcs;
    return procs && procs->newProc ? procs->newProc(size) : nullptr;
}

void DisposeHandle(HostHandle handle) {
    const HandleProcs *procs = gFilterRecord->handleProcs;
    if (handle && procs && procs->disposeProc)
        procs->disposeProc(handle);
}

char *LockHandle(HostHandle handle) {
    const HandleProcs *procs = gFilterRecord->handleProcs;
    return procs && procs->lockProc ? procs->lockProc(handle, 1) : nullptr;
}

void UnlockHandle(HostHandle handle) {
    const HandleProcs *procs = gFilterRecord->handleProcs;
    if (handle && procs && procs->unlockProc)
        procs->unlockProc(handle);
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

} // namespace

bool HaveBothHandles() {
    return IsHandleUsable(ParametersHandle(), kParametersHandleSize) &&
           IsHandleUsable(DataHandle(), kDataHandleSize);
}

HostResult LockHandles() {
    if (!HaveBothHandles())
        return kFilterBadParameters;
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
    HostResult result = MakeParametersHandle();
    if (const HostResult dataResult = MakeDataHandle())
        result = dataResult;
    if (result == kNoError)
        result = LockHandles();
    if (result != kNoError)
        return result;
    *gParameters = kDefaultParameters;
    *gDialogPending = 1;
    PlatformData *platform = gFilterRecord->platformData;
    if (platform && !platform->hwnd)
        platform->hwnd = GetActiveWindow();
    return kNoError;
}
