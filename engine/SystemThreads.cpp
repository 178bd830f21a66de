#include "engine/SystemThreads.h"

#include <windows.h>

#include <process.h>

#include <algorithm>

namespace {

unsigned __stdcall RunTask(void *argument) {
    const auto *task = static_cast<const WorkerTask *>(argument);
    task->run(task->argument);
    return 0;
}

void *StartThread(const WorkerTask *task) {
    return reinterpret_cast<void *>(
        _beginthreadex(nullptr, 0, RunTask, const_cast<WorkerTask *>(task), 0, nullptr));
}

void JoinThread(void *thread) {
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
}

} // namespace

WorkerThreads RenderThreads(int32_t spared) {
    SYSTEM_INFO system;
    GetSystemInfo(&system);
    const auto processors = static_cast<int32_t>(std::min<DWORD>(system.dwNumberOfProcessors, 1024));
    return {std::max(processors - spared, 1), StartThread, JoinThread};
}
