// Shares the bands of a picture out to threads.
#pragma once

#include "engine/image/WorkerThreads.h"

#include <cstdint>

constexpr int32_t kMaxBandWorkers = 16;

// Calls work(data, band, worker) for each band 0 .. bands − 1, once, from up to threads.count threads of
// which the calling one is worker 0; a free worker takes the next band. Returns when all are done. A thread
// that cannot be started is done without. `work` must not throw.
void ForEachBand(int32_t bands, const WorkerThreads &threads,
                 void (*work)(void *data, int32_t band, int32_t worker), void *data);
