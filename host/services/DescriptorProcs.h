// The scripting procedures: a filter reads its parameters from one handle and records them into another.
#pragma once

namespace host {

struct HostState;

void FillDescriptorProcs(HostState &state);

} // namespace host
