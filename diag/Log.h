// The log file of the current run.
#pragma once

#include "diag/ReportOwner.h"

#include <cstdint>

constexpr char kLogName[] = "Brillatrix Pro";

// Where OpenLog finds its folder; the storage room sets it before the log is opened.
extern const char *gLogFolderPath;
// Where the trace set-up file is looked for; set likewise. Empty when the folder could not be obtained.
extern const char *gProductCommonFolderPath;

// Rotates the old logs and opens a new one; once per process, whether or not it succeeds. Host's thread.
void OpenLog(NativeWindow ownerWindow, uint32_t ownerThreadId);
// Goes on with the log that CloseLog closed, wherever the rotation of other processes has moved it. When it
// is gone, another is begun if its place is free, without rotation. Nothing happens while a log is open, and
// when OpenLog has made none. Host's thread.
void ContinueLog();
void CloseLog();
