#include "engine/detect/Bands.h"

#include <algorithm>

int32_t WorkerCountForProcessors(uint32_t processors) {
    if (processors <= 2)
        return processors == 2 ? 2 : 1;
    return static_cast<int32_t>(std::min<uint32_t>(processors - 2, kMaxWorkers));
}

void PlanBands(const IntRect &bounds, int32_t workers, IntRect *bands) {
    const int32_t height = (bounds.bottom - bounds.top) / workers;
    int32_t top = bounds.top;
    for (int32_t i = 0; i < workers; ++i) {
        bands[i] = IntRect{bounds.left, top, bounds.right, top + height};
        top = bands[i].bottom + 1;
    }
    bands[workers - 1].bottom = bounds.bottom;
}
