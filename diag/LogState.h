// The state of the log, shared by the log and the reporter. Only the diagnostics' own code and tests include
// this.
#pragma once

#include <atomic>
#include <cstddef>
#include <windows.h>

constexpr size_t kLogPathCapacity = 1000; // characters, terminator included

// Tells a log from any other file that has taken its name; the size is that at its closing.
struct LogIdentity {
    DWORD volume, indexHigh, indexLow, sizeHigh, sizeLow;
};

struct LogState {
    bool setUpDone;                        // OpenLog has run, with or without success; host's thread
    bool hasLog;                           // it made a log; host's thread
    LogIdentity closedLog;                 // of the log when it is closed; host's thread
    HANDLE file;                           // null when no log is open; under the log's lock
    HWND ownerWindow;                      // owner thread only
    std::atomic<DWORD> ownerThread;        // 0 before OpenLog; any thread
    char path[kLogPathCapacity];           // of the current log; host's thread
    char traceSetupPath[kLogPathCapacity]; // empty without a product common folder; host's thread
};

extern LogState gLogState;
