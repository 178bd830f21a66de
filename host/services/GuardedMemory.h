// Memory that the host hands out. It ends in guard bytes, and a freed block is overwritten, so that a filter
// which writes too far or goes on using it shows it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace host {

// What lies around everything handed out, and must lie there still when it comes back.
constexpr uint8_t kGuardByte = 0xFD;

// The most of one block, so that a filter's slip cannot eat the machine's memory.
constexpr int64_t kLargestBlock = int64_t{1} << 30;

// Filled with what no filter may rely on, since hosts do not always clear memory. Null on failure.
char *AllocateGuarded(size_t size);
// False when the guard behind the block was written over.
bool FreeGuarded(char *data, size_t size);

} // namespace host
