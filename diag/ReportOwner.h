// Who owns the message boxes.
#pragma once

#include <cstdint>

// Native window handle, opaque here so that portable code may include this header.
using NativeWindow = void *;

// Both change when the host calls from elsewhere. Thread 0: no message box is shown. The calling thread must
// be the only one that shows any.
void SetReportOwner(NativeWindow window, uint32_t threadId);
// The window that message boxes belong to; returns the previous one. Owner thread.
NativeWindow SetReportOwnerWindow(NativeWindow window);
bool IsReportOwnerThread();
