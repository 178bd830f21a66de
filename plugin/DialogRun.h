// The interactive part of a run.
#pragma once

#include "diag/ResultCodes.h"

// Lets the user choose the parameters while the light source table is being built, and clears the
// dialog-pending byte. kUserCanceledErr when the user cancels.
HostResult RunDialog();
