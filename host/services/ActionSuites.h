// The action descriptor suite and the registry that keeps descriptors between runs.
#pragma once

namespace host {

struct HostState;

void FillActionSuites(HostState &state);

} // namespace host
