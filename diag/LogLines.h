// Lines into the open log. Any thread.
#pragma once

#include "diag/Compiler.h"
#include "diag/LogState.h"

#include <windows.h>

bool IsLogOpen();
// Lines go into the file from now on. The log's state owns it.
void SetLogFile(HANDLE file);
LogIdentity IdentifyLog(HANDLE file);

// Appends one formatted piece of text, whole and flushed.
void WriteLogLine(const char *format, ...) BX_PRINTF(1, 2);
// The same; nothing follows it. Notes which log it was and closes it.
void WriteLastLogLine(const char *format, ...) BX_PRINTF(1, 2);
