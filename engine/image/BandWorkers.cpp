#include "engine/image/BandWorkers.h"

#include <algorithm>
#include <atomic>

namespace {

struct SharedBands {
    std::atomic<int32_t> next;
    int32_t count;
    void (*work)(void *data, int32_t band, int32_t worker);
    void *data;
};

struct BandWorker {
    SharedBands *bands;
    int32_t number;
    WorkerTask task;
    void *thread; // null for the calling one
};

void TakeBands(void *argument) {
    const BandWorker &worker = *static_cast<const BandWorker *>(argument);
    SharedBands &bands = *worker.bands;
    for (int32_t band; (band = bands.next.fetch_add(1)) < bands.count;)
        bands.work(bands.data, band, worker.number);
}

} // namespace

void ForEachBand(int32_t bands, const WorkerThreads &threads,
                 void (*work)(void *data, int32_t band, int32_t worker), void *data) {
    SharedBands shared{{0}, bands, work, data};
    BandWorker workers[kMaxBandWorkers];
    const int32_t wanted = std::clamp(std::min(threads.count, bands), 1, kMaxBandWorkers);
    int32_t started = 1;
    for (; started < wanted; ++started) {
        BandWorker &worker = workers[started];
        worker = {&shared, started, {TakeBands, &worker}, nullptr};
        worker.thread = threads.start(&worker.task);
        if (!worker.thread)
            break; // those that did start, and this one, take all the bands
    }
    workers[0] = {&shared, 0, {}, nullptr};
    TakeBands(&workers[0]);
    for (int32_t i = 1; i < started; ++i)
        threads.join(workers[i].thread);
}
