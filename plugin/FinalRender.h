// The work of Start on the image: read it, find the lights, lay the stars, write it back.
#pragma once

#include "diag/ResultCodes.h"

// Runs on the host's thread with locked handles. Whatever the outcome, no task is left running and no buffer
// held on return.
HostResult FilterImage(bool showDialog);
