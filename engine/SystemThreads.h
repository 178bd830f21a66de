// The system's threads: for the table's task and its workers, and lent to the renderer.
#pragma once

#include "engine/image/WorkerThreads.h"

#include <cstdint>

int32_t ProcessorCount();

// `count` threads to work with, the calling one included.
WorkerThreads SystemThreads(int32_t count);
// One thread for each processor, less `spared`; at least the calling one.
WorkerThreads RenderThreads(int32_t spared);

// A thread that runs the task, as a HANDLE; 0 stackBytes: as many as the program's threads have. Null, with
// the reason in errno, when none is to be had. JoinSystemThread waits without limit for its end and closes
// it.
void *StartSystemThread(const WorkerTask *task, unsigned stackBytes);
void JoinSystemThread(void *thread);
