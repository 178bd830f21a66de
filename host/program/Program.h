// The program: one photo through the filter.
#pragma once

#include <string>
#include <vector>

namespace host {

enum ExitStatus : int {
    kExitDone = 0,
    kExitUsage = 2,
    kExitFile = 3,
    kExitPlugin = 4,
    kExitCancelled = 5,
    kExitNoScreen = 6,
};

// Arguments without the program's name. An exit status; everything is said on the console.
int RunProgram(const std::vector<std::wstring> &arguments);

} // namespace host
