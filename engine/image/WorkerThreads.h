// Threads to share work with. Engine and renderer know no system's threads: their callers lend them some.
#pragma once

#include <cstdint>

// What a thread is to do. It stays where it is until the thread has been joined; `run` must not throw.
struct WorkerTask {
    void (*run)(void *argument);
    void *argument;
};

struct WorkerThreads {
    int32_t count; // threads to work with, the calling one included; below 2 it works alone
    // Starts a thread that runs the task. Null when none is to be had.
    void *(*start)(const WorkerTask *task);
    // Waits for the thread's end and gives back all that it held.
    void (*join)(void *thread);
};

constexpr WorkerThreads kThisThreadOnly = {1, nullptr, nullptr};
