// What the host shows of the run, and whether its user has had enough. Hosts without these procedures are
// served all the same.
#pragma once

#include <cstdint>

void ReportProgress(int32_t done, int32_t total);
bool HasUserCancelled();
