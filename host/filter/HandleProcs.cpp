// The host's memory handles. Each block ends in guard bytes, dead handles are told from live ones by looking
// them up, and unlocked blocks move between calls, so that a filter which keeps a pointer too long shows it.
#include "host/filter/HostState.h"

#include <cstdlib>
#include <cstring>

namespace host {

constexpr size_t kHandleGuard = 16;
constexpr uint8_t kNewByte = 0xCD; // hosts do not always clear new handles
constexpr uint8_t kFreedByte = 0xDD;

static char *AllocateGuarded(size_t size) {
    char *data = static_cast<char *>(std::malloc(size + kHandleGuard));
    if (data)
        std::memset(data + size, kGuardByte, kHandleGuard);
    return data;
}

static void FreeGuarded(HostState &state, HandleBlock &block) {
    const char *guard = block.data + block.size;
    const bool isIntact = std::all_of(guard, guard + kHandleGuard,
                                      [](char byte) { return static_cast<uint8_t>(byte) == kGuardByte; });
    if (!isIntact)
        AddViolation(state, "wrote behind the end of a handle of " + std::to_string(block.size) + " bytes");
    std::memset(block.data, kFreedByte, static_cast<size_t>(block.size));
    std::free(block.data);
    block.data = nullptr;
}

HandleBlock *FindHandle(HostState &state, HostHandle handle) {
    for (HandleBlock &block : state.handles)
        if (&block.data == handle)
            return &block;
    return nullptr;
}

HostHandle MakeHandle(HostState &state, const void *bytes, size_t length) {
    char *data = AllocateGuarded(length);
    if (!data)
        return nullptr;
    if (bytes && length)
        std::memcpy(data, bytes, length);
    else
        std::memset(data, kNewByte, length);
    state.handles.push_back({data, static_cast<int32_t>(length), 0});
    return &state.handles.back().data;
}

void DropHandle(HostState &state, HostHandle handle) {
    for (auto block = state.handles.begin(); block != state.handles.end(); ++block)
        if (&block->data == handle) {
            FreeGuarded(state, *block);
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
        FreeGuarded(state, block);
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

void FillHandleProcs(HostState &state) {
    HandleProcs &procs = state.handleProcs;
    procs.handleProcsVersion = 1;
    procs.numHandleProcs = 8;
    procs.newProc = Offer<"newProc", NewHandle>(state);
    procs.disposeProc = Offer<"disposeProc", DisposeHandle>(state);
    procs.getSizeProc = Offer<"getSizeProc", GetHandleSize>(state);
    procs.lockProc = Offer<"lockProc", LockHandle>(state);
    procs.unlockProc = Offer<"unlockProc", UnlockHandle>(state);
    RefuseAll(&procs.setSizeProc, &procs.recoverSpaceProc, &procs.disposeRegularHandleProc);
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
