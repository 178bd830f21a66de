// How much memory a photo will take.
#pragma once

#include <cstdint>
#include <string>

namespace host {

// From the file's header (JPEG, PNG), else from its length: a guess for sharing out, in bytes.
uint64_t EstimateMemory(const std::wstring &path);
// Half of what is free now.
uint64_t MemoryToUse();

} // namespace host
