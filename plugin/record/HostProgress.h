// What the host shows of the run, and whether its user has had enough. Hosts without these procedures are
// served all the same.
#pragma once

#include "diag/ResultCodes.h"

#include <cstdint>

// An error when the host itself broke down meanwhile.
HostResult ReportProgress(int32_t done, int32_t total);
bool HasUserCancelled();
