// The host's memory pool: the buffer procedures, the buffer suite and the basic suite's blocks. A filter
// holds nothing but addresses; each is looked up before it is used.
#pragma once

#include "plugin/interface/HostSuites.h"

namespace host {

struct HostState;

void FillBufferProcs(HostState &state);

SuiteResult AllocateBasicBlock(size_t size, void **block);
SuiteResult FreeBasicBlock(void *block);
SuiteResult ReallocateBasicBlock(void *block, size_t newSize, void **newBlock);
// Frees all memory that is no handle, and tells how many blocks there were.
size_t DropMemory(HostState &state);

} // namespace host
