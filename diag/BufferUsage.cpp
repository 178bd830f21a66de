#include "diag/BufferUsage.h"

#include <atomic>
#include <cstdlib>
#include <windows.h>

namespace {

// 1024 spins; the top bit asks for the section's event in advance, so that entering never fails later.
constexpr DWORD kSpinCount = 0x80000400;

// The section's name in reports is "BufferUsageSection".
CRITICAL_SECTION gBufferUsageSection;
std::atomic<bool> gSectionExists = false;
// Changed inside the section; atomic all the same for the calls made while no section exists.
std::atomic<int64_t> gBytesInUse = 0;

void CountBytes(int64_t change) {
    if (!gSectionExists) {
        gBytesInUse += change;
        return;
    }
    EnterCriticalSection(&gBufferUsageSection);
    gBytesInUse += change;
    LeaveCriticalSection(&gBufferUsageSection);
}

} // namespace

bool CreateBufferUsageSection(uint32_t *systemError) {
    if (gSectionExists)
        return true;
    if (!InitializeCriticalSectionAndSpinCount(&gBufferUsageSection, kSpinCount)) {
        *systemError = GetLastError();
        return false;
    }
    gSectionExists = true;
    return true;
}

void PassThroughBufferUsageSection() {
    if (!gSectionExists)
        return;
    EnterCriticalSection(&gBufferUsageSection);
    LeaveCriticalSection(&gBufferUsageSection);
}

void DeleteBufferUsageSection() {
    if (!gSectionExists)
        return;
    gSectionExists = false;
    DeleteCriticalSection(&gBufferUsageSection);
}

void *CountedAlloc(size_t size) {
    void *block = malloc(size);
    if (block)
        CountBytes(static_cast<int64_t>(size));
    return block;
}

void *CountedZeroAlloc(size_t size) {
    void *block = calloc(size, 1);
    if (block)
        CountBytes(static_cast<int64_t>(size));
    return block;
}

// A size of 0 asks for one byte: realloc would free the block and return null, as if it had failed.
void *CountedRealloc(void *block, size_t oldSize, size_t newSize) {
    void *grown = realloc(block, newSize ? newSize : 1);
    if (grown)
        CountBytes(static_cast<int64_t>(newSize) - static_cast<int64_t>(oldSize));
    return grown;
}

void CountedFree(void *block, size_t size) {
    if (!block)
        return;
    free(block);
    CountBytes(-static_cast<int64_t>(size));
}

int64_t BufferBytesInUse() {
    return gBytesInUse;
}
