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
    return StartSystemThread(task, 0);
}

} // namespace

int32_t ProcessorCount() {
    SYSTEM_INFO system;
    GetSystemInfo(&system);
    return static_cast<int32_t>(std::min<DWORD>(system.dwNumberOfProcessors, 1024));
}

WorkerThreads SystemThreads(int32_t count) {
    return {count, StartThread, JoinSystemThread};
}

WorkerThreads RenderThreads(int32_t spared) {
    return SystemThreads(std::max(ProcessorCount() - spared, 1));
}

void *StartSystemThread(const WorkerTask *task, unsigned stackBytes) {
    return reinterpret_cast<void *>(
        _beginthreadex(nullptr, stackBytes, RunTask, const_cast<WorkerTask *>(task), 0, nullptr));
}

void JoinSystemThread(void *thread) {
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
}
