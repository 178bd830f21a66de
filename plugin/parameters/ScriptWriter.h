// The current parameter set to the host's scripting system. Needs locked handles.
#pragma once

#include "diag/ResultCodes.h"

// Finish: records the current set as the host's new descriptor. kErrMissingParameter when none can be opened.
HostResult WriteScriptParameters();
