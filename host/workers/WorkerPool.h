// Workers that share the photos of a batch.
#pragma once

#include "host/workers/PhotoResult.h"

#include <functional>
#include <string>
#include <vector>

namespace host {

struct PoolTask {
    std::wstring input, output;
    uint64_t memory = 0; // bytes that the photo is expected to take
};

struct PoolSettings {
    std::vector<std::wstring> words; // of a worker's command line
    int32_t jobs = 1;
    uint64_t memory = 0; // for all photos in work; one larger than that is worked on alone
    int64_t timeout = 0; // milliseconds a photo; 0: none
};

// Hears each photo's result, never two at a time. False: begin no more.
using ResultTaker = std::function<bool(size_t task, const PhotoResult &result)>;

// All tasks, begun in their order. A worker that crashes or takes too long fails its photo only. Ctrl+C lets
// the photos in work end, the second one does not; photos not begun are not told. False with a reason when no
// worker can do anything; *status then says how the program should end.
bool RunPool(const PoolSettings &settings, const std::vector<PoolTask> &tasks, const ResultTaker &take,
             int *status, std::string *why);

} // namespace host
