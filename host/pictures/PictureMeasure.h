// How large a picture is, by its file's head alone.
#pragma once

#include <cstdint>
#include <string>

namespace host {

// Bytes of its samples as they will lie in memory; 0 when the head does not tell.
uint64_t MeasureSamples(const std::wstring &path);

} // namespace host
