// Shares the bands of a picture out to threads.
#pragma once

#include <cstdint>

// Calls work(data, band, worker) for each band 0 .. bands − 1, once, from up to `workers` threads of which
// the calling one is worker 0; a free worker takes the next band. Returns when all are done. A thread that
// cannot be started is done without. `work` must not throw.
void ForEachBand(int32_t bands, int32_t workers, void (*work)(void *data, int32_t band, int32_t worker),
                 void *data);
