// The standard library's threads, for the renderer to share its work with.
#pragma once

#include "render/WorkerThreads.h"

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
