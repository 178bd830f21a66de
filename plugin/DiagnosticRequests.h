// The module's side of DiagnosticInterface.h.
#pragma once

#include "plugin/interface/DiagnosticInterface.h"

// Answers a message to a dialog procedure without a window; 0 when it is none of ours. Host's thread.
intptr_t AnswerDiagnosticRequest(uint32_t message, uintptr_t wParam, intptr_t lParam);
