// How the program ends.
#pragma once

namespace host {

enum ExitStatus : int {
    kExitDone = 0,
    kExitUsage = 2,
    kExitFile = 3,
    kExitPlugin = 4,
    kExitCancelled = 5,
    kExitNoScreen = 6,
    kExitSomeFailed = 7,
};

} // namespace host
