// Playing the selectors, one by one and in the order of a whole run.
#pragma once

#include "host/services/HostRecord.h"

namespace host {

struct RunResult {
    int16_t code = 0;            // 0 when the document was changed as the filter wanted
    int16_t failedSelector = -1; // -1 with code 0, and when the filter was not run
};

// Calls About.
int16_t CallAbout(FilterHost &filterHost);
// Parameters (when asked for), Prepare, Start, advance and Continue until the rectangles are empty, commit,
// Finish. After a failure or a cancel the document is what it was before; when Finish fails, after all is
// written, the document stays changed. A document that the filter's property list forbids is refused.
RunResult RunFilter(FilterHost &filterHost, bool withParameters);

// One by one, in any order. BeginRun makes the script's handle and fills the record; EndRun takes what was
// recorded and reports leaks of the run. CallSelector begins a run when none is begun. It touches the
// document only through advance and commit; nothing is put back.
void BeginRun(FilterHost &filterHost);
void EndRun(FilterHost &filterHost);
int16_t CallSelector(FilterHost &filterHost, int16_t selector);
// The host's own advance before a Continue: commits, then serves the rectangles. A host code.
int16_t AdvanceHost(FilterHost &filterHost);
// Writes the output handed out last into the document.
void CommitOutput(FilterHost &filterHost);

} // namespace host
