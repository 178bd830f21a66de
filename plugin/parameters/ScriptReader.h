// The current parameter set from the host's scripting system. Needs locked handles.
#pragma once

#include "diag/ResultCodes.h"

// Start: takes the script's values, when there is a script, into the current set. *showDialog becomes whether
// the dialog is wanted: the dialog-pending byte, or what the script asks for. Messages to the user are shown
// here. Returns the host result of Start, kErrMissingParameter when showDialog is null.
HostResult ReadScriptParameters(bool *showDialog);
