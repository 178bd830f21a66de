// A batch from its inputs to its exit status.
#pragma once

#include "host/batch/BatchOptions.h"

#include <string>
#include <vector>

namespace host {

// `words` is a worker's command line without the program. An exit status; all is said on the console.
int RunBatch(const BatchOptions &options, const std::vector<std::wstring> &words);

} // namespace host
