// The frame's side of storage/ParameterBlock.h: makes blocks of the current set and commits them to it.
#pragma once

#include "storage/ParameterBlock.h"

// The accessor that Prepare installs. Everything that concerns the current set fails (0) while no parameters
// handle is locked.
uintptr_t AccessParameterBlock(int32_t operation, const ParameterBlock *block);
