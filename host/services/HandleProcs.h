// The host's memory handles. Each block ends in guard bytes, dead handles are told from live ones by looking
// them up, and unlocked blocks move between calls, so that a filter which keeps a pointer too long shows it.
#pragma once

#include "host/services/HostRecord.h"

namespace host {

struct HandleBlock;

void FillHandleProcs(HostState &state);

HostHandle MakeHandle(HostState &state, const void *bytes, size_t length);
void DropHandle(HostState &state, HostHandle handle);
HandleBlock *FindHandle(HostState &state, HostHandle handle);
void MoveUnlockedHandles(HostState &state);

// The bytes of a handle of this host (empty for a null or dead one).
std::vector<uint8_t> HandleBytes(const FilterHost &filterHost, HostHandle handle);
// A new handle with these bytes, to plant as `parameters` or `*data`.
HostHandle PlantHandle(FilterHost &filterHost, const std::vector<uint8_t> &bytes);

} // namespace host
