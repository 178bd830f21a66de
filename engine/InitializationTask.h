// The background task that builds the global light source table: analysis image, band workers, merge,
// ranking. Windows only. Start, Stop and Close are called on the host's thread; Wait and the getters on any
// thread.
#pragma once

#include "engine/image/ImageBuffer.h"

#include <cstdint>

// Starts the task on `image`, which must stay until StopLightSourceTableInit returns. No result: a failure
// shows in LightSourceTableResult. A run that was not stopped is stopped first.
void StartLightSourceTableInit(const ImageBuffer &image);

// Waits up to timeoutMs for the table. True when the task is done, also when it failed, and when there is
// nothing to wait for (never started, start failed, or stopped): then the table is empty and only the result
// code says why. Either count may be null.
bool WaitLightSourceTable(uint32_t *rowsDone, uint32_t *rowsTotal, uint32_t timeoutMs);

// Raises the cancel flags and does not wait: the task ends soon, with the failure it has met or none.
void CancelLightSourceTableInit();
// Cancels the task when it still runs, waits for its end without limit, and frees the table. Does no harm
// when nothing was started.
void StopLightSourceTableInit();

// 0 when the table is good, as far as is known yet.
HostResult LightSourceTableResult();

// The task's thread (a HANDLE) to wait on, or null. Closed by CloseLightSourceTableThread and nobody else.
void *LightSourceTableThread();
// Waits without limit for the task's thread, closes its handle and forgets it. Call it at the end of every
// run, after StopLightSourceTableInit; does no harm when there is no thread.
void CloseLightSourceTableThread();
