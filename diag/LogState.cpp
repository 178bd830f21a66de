#include "diag/LogState.h"

LogState gLogState;
