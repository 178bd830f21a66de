// The standard library's threads, to share work with.
#pragma once

#include "engine/image/WorkerThreads.h"

#include <memory>
#include <thread>

inline WorkerThreads StandardThreads(int32_t count) {
    return {count,
            [](const WorkerTask *task) -> void * { return new std::thread(task->run, task->argument); },
            [](void *thread) {
                const std::unique_ptr<std::thread> owned(static_cast<std::thread *>(thread));
                owned->join();
            }};
}
