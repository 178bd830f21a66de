// The batch's side of a worker.
#pragma once

#include "host/workers/Worker.h"

#include <windows.h>

#include <string>
#include <vector>

namespace host {

struct WorkerProcess {
    HANDLE process = nullptr;
    DWORD id = 0;
    HANDLE toWorker = nullptr, fromWorker = nullptr;
};

// A job that ends its processes with this one. Null when the system has none.
HANDLE MakeWorkerJob();

// This program with the words, its pipes and nothing to write errors to. False with a reason.
bool StartWorker(const std::vector<std::wstring> &words, HANDLE job, WorkerProcess *worker, std::string *why);
// Ends the process when it does not end by itself, and gives its exit status.
DWORD EndWorker(WorkerProcess *worker, bool atOnce);

} // namespace host
