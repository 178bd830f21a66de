// Serving the filter's requests for samples: buffers are handed out by rectangle and plane range, checked
// against the document and against what the filter wrote around them, and committed at the next request.
#pragma once

#include "host/services/HostRecord.h"

namespace host {

int16_t ServeAdvance(HostState &state);
void CommitPendingOutput(HostState &state);
void DropBuffers(HostState &state);
void RestoreOriginals(HostState &state);
// Keeps what the run wrote to the selection, where that is the host's part.
void ClipToSelection(HostState &state);
uint8_t FilterCaseFlags(const HostState &state);
Rectangle FilterRectangle(const FilterHost &filterHost);
// True when one of the three rectangles asks for something, which is when a host advances and calls Continue.
bool WantsContinue(const FilterHost &filterHost);

} // namespace host
