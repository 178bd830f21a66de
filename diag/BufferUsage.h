// Image and table memory, counted: every block taken or given back here changes one process-wide byte counter
// under the "BufferUsageSection" critical section.
#pragma once

#include <cstddef>
#include <cstdint>

// Creates the section when it does not exist. False, with the system's error code in *systemError, when the
// system refuses. The calls below also work, and count, while no section exists.
bool CreateBufferUsageSection(uint32_t *systemError);
// Enters and leaves the section once, so that no other thread is inside it.
void PassThroughBufferUsageSection();
// No other thread may take or give back memory meanwhile.
void DeleteBufferUsageSection();

// malloc, calloc, realloc and free with the counter. `size` and `oldSize` are in bytes; a caller keeps the
// size of what it owns and hands it back. CountedRealloc leaves the old block alone when it returns null. Any
// thread.
void *CountedAlloc(size_t size);
// CountedZeroAlloc gives zeroed memory, which costs nothing where it is never looked at.
void *CountedZeroAlloc(size_t size);
void *CountedRealloc(void *block, size_t oldSize, size_t newSize);
void CountedFree(void *block, size_t size);

// Bytes now held. Any thread.
int64_t BufferBytesInUse();
