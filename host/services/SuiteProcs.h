// The basic suite, through which all others are had, and the property and error suites.
#pragma once

namespace host {

struct HostState;

void FillSuites(HostState &state);

} // namespace host
