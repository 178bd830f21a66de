// The record that travels with every selector but About.
#pragma once

#include "host/services/HostRecord.h"

namespace host {

void FillAllTables(HostState &state);
void FillRecord(HostState &state, int16_t selector);

} // namespace host
