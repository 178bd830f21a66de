#include "host/services/BufferProcs.h"

#include "host/services/GuardedMemory.h"
#include "host/services/HostState.h"

#include <cstring>

namespace host {

static MemoryBlock *KeepBlock(MemoryKind kind, size_t size) {
    char *data = AllocateGuarded(size);
    if (!data)
        return nullptr;
    try {
        return &gHostState->blocks.emplace_back(MemoryBlock{kind, data, size, 0});
    } catch (const std::bad_alloc &) {
        FreeGuarded(data, size);
        return nullptr;
    }
}

static void FreeData(HostState &state, const MemoryBlock &block) {
    if (!FreeGuarded(block.data, block.size))
        AddViolation(state, "wrote behind the end of a buffer of " + std::to_string(block.size) + " bytes");
}

static void DropBlock(const MemoryBlock *block) {
    FreeData(*gHostState, *block);
    gHostState->blocks.remove_if([block](const MemoryBlock &kept) { return &kept == block; });
}

size_t DropMemory(HostState &state) {
    const size_t count = state.blocks.size();
    for (const MemoryBlock &block : state.blocks)
        FreeData(state, block);
    state.blocks.clear();
    return count;
}

// By what the filter holds of that kind; null and a violation for anything else.
static MemoryBlock *FindBlock(MemoryKind kind, const void *held, const char *name) {
    for (MemoryBlock &block : gHostState->blocks)
        if (block.kind == kind &&
            held == (kind == MemoryKind::kBuffer ? &block : static_cast<void *>(block.data)))
            return &block;
    AddViolation(*gHostState, std::string(name) + (held ? " of memory that is not alive" : " of null"));
    return nullptr;
}

static int64_t PoolSpace() {
    int64_t space = kLargestBlock;
    for (const MemoryBlock &block : gHostState->blocks)
        space -= static_cast<int64_t>(block.size);
    return std::max<int64_t>(space, 0);
}

static HostResult Allocate64(int64_t size, BufferId *buffer) {
    if (!buffer || size <= 0) {
        AddViolation(*gHostState, "a buffer of " + std::to_string(size) + " bytes");
        return kParamErr;
    }
    MemoryBlock *block =
        size <= PoolSpace() ? KeepBlock(MemoryKind::kBuffer, static_cast<size_t>(size)) : nullptr;
    if (!block)
        return kMemFullErr;
    *buffer = block;
    return kNoError;
}

static HostResult Allocate(int32_t size, BufferId *buffer) {
    return Allocate64(size, buffer);
}

static char *LockBuffer(BufferId buffer, HostBoolean) {
    MemoryBlock *block = FindBlock(MemoryKind::kBuffer, buffer, "Buffer lock");
    if (!block)
        return nullptr;
    block->locks++;
    return block->data;
}

static void UnlockBuffer(BufferId buffer) {
    MemoryBlock *block = FindBlock(MemoryKind::kBuffer, buffer, "Buffer unlock");
    if (block && --block->locks < 0) {
        block->locks = 0;
        gHostState->owner->log.unlocksWithoutLock++;
    }
}

static void FreeBuffer(BufferId buffer) {
    if (const MemoryBlock *block = FindBlock(MemoryKind::kBuffer, buffer, "Buffer free"))
        DropBlock(block);
}

static int32_t Space() {
    return static_cast<int32_t>(PoolSpace());
}

static HostResult Reserve(int32_t size) {
    return size >= 0 && size <= PoolSpace() ? kNoError : kMemFullErr;
}

// As much of what is wanted as there is, but no less than the least size.
static char *NewSuiteBuffer(uint32_t *wantedSize, uint32_t leastSize) {
    const int64_t wanted = wantedSize ? std::max(*wantedSize, leastSize) : leastSize;
    const int64_t size = std::max<int64_t>(std::min(wanted, PoolSpace()), leastSize);
    MemoryBlock *block = size > 0 && size <= PoolSpace()
                             ? KeepBlock(MemoryKind::kSuiteBuffer, static_cast<size_t>(size))
                             : nullptr;
    if (wantedSize)
        *wantedSize = block ? static_cast<uint32_t>(size) : 0;
    return block ? block->data : nullptr;
}

static void DisposeSuiteBuffer(char **buffer) {
    const MemoryBlock *block =
        FindBlock(MemoryKind::kSuiteBuffer, buffer ? *buffer : nullptr, "Buffer.Dispose");
    if (!block || !buffer)
        return;
    DropBlock(block);
    *buffer = nullptr;
}

static size_t SuiteBufferSize(char *buffer) {
    const MemoryBlock *block = FindBlock(MemoryKind::kSuiteBuffer, buffer, "Buffer.GetSize");
    return block ? block->size : 0;
}

static size_t SuiteSpace() {
    return static_cast<size_t>(PoolSpace());
}

SuiteResult AllocateBasicBlock(size_t size, void **block) {
    if (!block)
        return kSuiteBadParameter;
    const MemoryBlock *made = size <= static_cast<size_t>(PoolSpace())
                                  ? KeepBlock(MemoryKind::kBasicBlock, std::max<size_t>(size, 1))
                                  : nullptr;
    if (!made)
        return kMemFullErr;
    *block = made->data;
    return 0;
}

SuiteResult FreeBasicBlock(void *held) {
    const MemoryBlock *block = FindBlock(MemoryKind::kBasicBlock, held, "FreeBlock");
    if (!block)
        return kSuiteBadParameter;
    DropBlock(block);
    return 0;
}

SuiteResult ReallocateBasicBlock(void *held, size_t newSize, void **newBlock) {
    const MemoryBlock *block = held ? FindBlock(MemoryKind::kBasicBlock, held, "ReallocateBlock") : nullptr;
    if (!newBlock || (held && !block))
        return kSuiteBadParameter;
    void *made = nullptr;
    if (const SuiteResult result = AllocateBasicBlock(newSize, &made))
        return result;
    if (block) {
        std::memcpy(made, block->data, std::min(block->size, newSize));
        DropBlock(block);
    }
    *newBlock = made;
    return 0;
}

void FillBufferProcs(HostState &state) {
    BufferProcs &procs = state.bufferProcs;
    procs.bufferProcsVersion = kBufferProcsVersion;
    procs.numBufferProcs = kBufferProcsCount;
    procs.allocateProc = Offer<"allocateProc", Allocate>(state);
    procs.lockProc = Offer<"lockBufferProc", LockBuffer>(state);
    procs.unlockProc = Offer<"unlockBufferProc", UnlockBuffer>(state);
    procs.freeProc = Offer<"freeProc", FreeBuffer>(state);
    procs.spaceProc = Offer<"spaceProc", Space>(state);
    procs.reserveProc = Offer<"reserveProc", Reserve>(state);
    procs.allocateProc64 = Offer<"allocateProc64", Allocate64>(state);
    procs.spaceProc64 = Offer<"spaceProc64", PoolSpace>(state);
    state.bufferSuite.New = Offer<"Buffer.New", NewSuiteBuffer>(state);
    state.bufferSuite.Dispose = Offer<"Buffer.Dispose", DisposeSuiteBuffer>(state);
    state.bufferSuite.GetSize = Offer<"Buffer.GetSize", SuiteBufferSize>(state);
    state.bufferSuite.GetSpace = Offer<"Buffer.GetSpace", SuiteSpace>(state);
}

} // namespace host
