// The log file of the current run, and who owns the message boxes.
#pragma once

#include "diag/Compiler.h"

#include <cstdint>

// Native window handle, opaque here so that portable code may include this header.
using NativeWindow = void *;

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
// Appends one formatted piece of text, whole and flushed. Any thread.
void WriteLogLine(const char *format, ...) BX_PRINTF(1, 2);
void CloseLog();

// Both change when the host calls from elsewhere. Thread 0: no message box is shown. The calling thread must
// be the only one that shows any.
void SetReportOwner(NativeWindow window, uint32_t threadId);
// The window that message boxes belong to; returns the previous one. Owner thread.
NativeWindow SetReportOwnerWindow(NativeWindow window);
bool IsReportOwnerThread();
