#include "host/services/HandleProcs.h"

#include "host/services/GuardedMemory.h"
#include "host/services/HostState.h"

#include <cstring>

namespace host {

constexpr HostResult kNilHandleErr = -109;

static void FreeData(HostState &state, HandleBlock &block) {
    if (!FreeGuarded(block.data, static_cast<size_t>(block.size)))
        AddViolation(state, "wrote behind the end of a handle of " + std::to_string(block.size) + " bytes");
    block.data = nullptr;
}

HandleBlock *FindHandle(HostState &state, HostHandle handle) {
    for (HandleBlock &block : state.handles)
        if (&block.data == handle)
            return &block;
    return nullptr;
}

HostHandle MakeHandle(HostState &state, const void *bytes, size_t length) {
    state.handles.push_back({nullptr, static_cast<int32_t>(length), 0}); // first: it may throw
    char *&data = state.handles.back().data;
    data = AllocateGuarded(length);
    if (!data) {
        state.handles.pop_back();
        return nullptr;
    }
    if (bytes && length)
        std::memcpy(data, bytes, length);
    return &data;
}

void DropHandle(HostState &state, HostHandle handle) {
    for (auto block = state.handles.begin(); block != state.handles.end(); ++block)
        if (&block->data == handle) {
            FreeData(state, *block);
            state.handles.erase(block);
            return;
        }
}

void MoveUnlockedHandles(HostState &state) {
    for (HandleBlock &block : state.handles) {
        char *moved = block.locks == 0 ? AllocateGuarded(static_cast<size_t>(block.size)) : nullptr;
        if (!moved)
            continue;
        std::memcpy(moved, block.data, static_cast<size_t>(block.size));
        FreeData(state, block);
        block.data = moved;
    }
}

static HandleBlock *FindOrBlame(HostHandle handle, const char *name) {
    HandleBlock *block = FindHandle(*gHostState, handle);
    if (!block)
        AddViolation(*gHostState,
                     std::string(name) + (handle ? " of a handle that is not alive" : " of null"));
    return block;
}

static HostHandle NewHandle(int32_t size) {
    if (size <= 0) {
        AddViolation(*gHostState, "newProc of " + std::to_string(size) + " bytes");
        return nullptr;
    }
    return MakeHandle(*gHostState, nullptr, static_cast<size_t>(size));
}

static void DisposeHandle(HostHandle handle) {
    if (HandleBlock *block = FindOrBlame(handle, "disposeProc")) {
        if (handle == gHostState->iccHandle)
            AddViolation(*gHostState, "disposed the host's colour profile");
        DropHandle(*gHostState, &block->data);
    }
}

static int32_t GetHandleSize(HostHandle handle) {
    const HandleBlock *block = FindOrBlame(handle, "getSizeProc");
    return block ? block->size : 0;
}

// The data always moves, as it may on any host; a locked handle cannot.
static HostResult SetHandleSize(HostHandle handle, int32_t size) {
    HandleBlock *block = FindOrBlame(handle, "setSizeProc");
    if (!block)
        return kNilHandleErr;
    if (size <= 0 || block->locks > 0) {
        AddViolation(*gHostState, block->locks > 0 ? "setSizeProc of a locked handle"
                                                   : "setSizeProc to " + std::to_string(size) + " bytes");
        return block->locks > 0 ? kMemFullErr : kParamErr;
    }
    char *moved = AllocateGuarded(static_cast<size_t>(size));
    if (!moved)
        return kMemFullErr;
    std::memcpy(moved, block->data, static_cast<size_t>(std::min(size, block->size)));
    FreeData(*gHostState, *block);
    *block = {moved, size, 0};
    return kNoError;
}

static char *LockHandle(HostHandle handle, HostBoolean) {
    HandleBlock *block = FindOrBlame(handle, "lockProc");
    if (!block)
        return nullptr;
    block->locks++;
    return block->data;
}

static void UnlockHandle(HostHandle handle) {
    HandleBlock *block = FindOrBlame(handle, "unlockProc");
    if (!block)
        return;
    if (block->locks > 0)
        block->locks--;
    else
        gHostState->owner->log.unlocksWithoutLock++;
}

static void SetLock(HostHandle handle, HostBoolean lock, char **address, HostBoolean *wasLocked) {
    const HandleBlock *block = FindHandle(*gHostState, handle);
    if (wasLocked)
        *wasLocked = block && block->locks > 0;
    char *data = lock ? LockHandle(handle, 0) : nullptr;
    if (!lock)
        UnlockHandle(handle);
    if (address)
        *address = data;
}

// This host's pool has room whenever the machine has.
static void RecoverSpace(int32_t) {}

static void FillHandleSuites(HostState &state) {
    const HandleProcs &procs = state.handleProcs;
    // cppcheck-suppress assignBoolToPointer  ; it takes the text between < and > for comparisons
    const SetHandleLock setLock = Offer<"SetLock", SetLock>(state);
    state.handleSuite1 = {procs.newProc,     procs.disposeProc, setLock,
                          procs.getSizeProc, procs.setSizeProc, procs.recoverSpaceProc};
    state.handleSuite2 = {procs.newProc,     procs.disposeProc, procs.disposeRegularHandleProc, setLock,
                          procs.getSizeProc, procs.setSizeProc, procs.recoverSpaceProc};
}

void FillHandleProcs(HostState &state) {
    HandleProcs &procs = state.handleProcs;
    procs.handleProcsVersion = 1;
    procs.numHandleProcs = 8;
    procs.newProc = Offer<"newProc", NewHandle>(state);
    procs.disposeProc = Offer<"disposeProc", DisposeHandle>(state);
    procs.getSizeProc = Offer<"getSizeProc", GetHandleSize>(state);
    procs.lockProc = Offer<"lockProc", LockHandle>(state);
    procs.unlockProc = Offer<"unlockProc", UnlockHandle>(state);
    procs.setSizeProc = Offer<"setSizeProc", SetHandleSize>(state);
    procs.recoverSpaceProc = Offer<"recoverSpaceProc", RecoverSpace>(state);
    procs.disposeRegularHandleProc = Offer<"disposeRegularHandleProc", DisposeHandle>(state);
    FillHandleSuites(state);
}

std::vector<uint8_t> HandleBytes(const FilterHost &filterHost, HostHandle handle) {
    const HandleBlock *block = FindHandle(*filterHost.state, handle);
    if (!block)
        return {};
    const uint8_t *bytes = reinterpret_cast<const uint8_t *>(block->data);
    return {bytes, bytes + block->size};
}

HostHandle PlantHandle(FilterHost &filterHost, const std::vector<uint8_t> &bytes) {
    return MakeHandle(*filterHost.state, bytes.data(), bytes.size());
}

} // namespace host
