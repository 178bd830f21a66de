// Tables of the host's filter interface that many filters live on and ours does without: memory from the
// host's pool, handles by suite, and drawing into a window.
#pragma once

#include "plugin/interface/HostTypes.h"

namespace host {

using BufferId = void *; // opaque

struct BufferProcs {
    int16_t bufferProcsVersion;
    int16_t numBufferProcs;
    HostResult (*allocateProc)(int32_t size, BufferId *buffer);
    char *(*lockProc)(BufferId buffer, HostBoolean moveHigh); // null on failure
    void (*unlockProc)(BufferId buffer);
    void (*freeProc)(BufferId buffer);
    int32_t (*spaceProc)();
    HostResult (*reserveProc)(int32_t size);
    HostResult (*allocateProc64)(int64_t size, BufferId *buffer);
    int64_t (*spaceProc64)();
};
constexpr int16_t kBufferProcsVersion = 2, kBufferProcsCount = 8;

constexpr char kBufferSuiteName[] = "Photoshop Buffer Suite for Plug-ins";
constexpr char kHandleSuiteName[] = "Photoshop Handle Suite for Plug-ins";

// Version 1. Hands out the memory itself.
struct BufferSuite {
    char *(*New)(uint32_t *wantedSize, uint32_t leastSize); // *wantedSize becomes what there is; may be null
    void (*Dispose)(char **buffer);                         // *buffer becomes null
    size_t (*GetSize)(char *buffer);                        // 0: not a buffer
    size_t (*GetSpace)();
};

using SetHandleLock = void (*)(HostHandle handle, HostBoolean lock, char **address, HostBoolean *wasLocked);

struct HandleSuite1 {
    HostHandle (*New)(int32_t size);
    void (*Dispose)(HostHandle handle);
    SetHandleLock SetLock;
    int32_t (*GetSize)(HostHandle handle);
    HostResult (*SetSize)(HostHandle handle, int32_t size);
    void (*RecoverSpace)(int32_t size);
};

struct HandleSuite2 {
    HostHandle (*New)(int32_t size);
    void (*Dispose)(HostHandle handle);
    void (*DisposeRegularHandle)(HostHandle handle);
    SetHandleLock SetLock;
    int32_t (*GetSize)(HostHandle handle);
    HostResult (*SetSize)(HostHandle handle, int32_t size);
    void (*RecoverSpace)(int32_t size);
};

// Samples in the filter's own memory; baseAddr is the one at the top left of bounds.
struct PixelMap {
    int32_t version; // 0
    HostRect32 bounds;
    int32_t imageMode;
    int32_t rowBytes, colBytes, planeBytes;
    void *baseAddr;
    void *mat;
    void *masks;
    int32_t maskPhaseRow, maskPhaseCol;
};

constexpr HostResult kFilterBadMode = -30101;

// Draws source, a part of the map's bounds, with its top left at the given place of a device context.
using DisplayPixels = HostResult (*)(const PixelMap *map, const HostRect32 *source, int32_t row,
                                     int32_t column, void *deviceContext);

static_assert(sizeof(BufferProcs) == 72 && offsetof(BufferProcs, allocateProc) == 8 &&
              offsetof(BufferProcs, spaceProc) == 40 && offsetof(BufferProcs, spaceProc64) == 64);
static_assert(sizeof(BufferSuite) == 32 && sizeof(HandleSuite1) == 48 && sizeof(HandleSuite2) == 56);
static_assert(sizeof(PixelMap) == 72 && offsetof(PixelMap, imageMode) == 20 &&
              offsetof(PixelMap, baseAddr) == 40 && offsetof(PixelMap, maskPhaseCol) == 68);

} // namespace host
