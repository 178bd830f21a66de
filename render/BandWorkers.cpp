#include "render/BandWorkers.h"

#include "render/RenderDriver.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <thread>

namespace {

struct SharedBands {
    std::atomic<int32_t> next;
    int32_t count;
    void (*work)(void *data, int32_t band, int32_t worker);
    void *data;
};

void TakeBands(SharedBands *bands, int32_t worker) {
    for (int32_t band; (band = bands->next.fetch_add(1)) < bands->count;)
        bands->work(bands->data, band, worker);
}

} // namespace

void ForEachBand(int32_t bands, int32_t workers, void (*work)(void *data, int32_t band, int32_t worker),
                 void *data) {
    SharedBands shared{{0}, bands, work, data};
    std::thread threads[kMaxRenderWorkers - 1];
    const int32_t helpers = std::clamp(std::min(workers, bands), 1, kMaxRenderWorkers) - 1;
    int32_t started = 0;
    try {
        for (; started < helpers; ++started)
            threads[started] = std::thread(TakeBands, &shared, started + 1);
    } catch (const std::exception &) {
        // The threads that did start, and this one, take all the bands.
    }
    TakeBands(&shared, 0);
    for (int32_t i = 0; i < started; ++i)
        threads[i].join();
}
