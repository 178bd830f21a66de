// Making and freeing a detection worker's context.
#pragma once

#include "engine/detect/Detection.h"

// Fills *worker, whatever it held, for worker `index` and its band. Every buffer that cannot be allocated is
// reported and the next one still tried; then the result is kMemFullErr, and ReleaseWorkerContext must be
// called all the same.
HostResult InitializeWorkerContext(uint32_t index, const IntRect &band, DetectionShared *shared,
                                   WorkerContext *worker);

// Frees all memory of the context, the table included, and zeroes it. A zeroed context may be passed. The
// termination event is its creator's to close.
void ReleaseWorkerContext(WorkerContext *worker);
