// Timing shared by the benchmarks.
#pragma once

#include <chrono>
#include <ctime>

// Processor time of the whole process instead of wall-clock time: for a machine on which other things run.
// Native builds only; on Windows the library's clock is a wall clock.
inline bool gCountProcessorTime = false;

inline double ReadSeconds() {
    if (gCountProcessorTime)
        return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

struct Stopwatch {
    double start = ReadSeconds();
    double Seconds() const { return ReadSeconds() - start; }
};
