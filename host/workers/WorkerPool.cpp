#include "host/workers/WorkerPool.h"

#include "host/base/Console.h"
#include "host/base/ExitStatus.h"
#include "host/base/FileBytes.h"
#include "host/base/SystemText.h"
#include "host/workers/WorkerProcess.h"

#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <thread>

namespace host {

constexpr int kMostStarts = 3;     // of one worker
constexpr DWORD kStartPause = 200; // milliseconds
constexpr auto kWatchPause = std::chrono::milliseconds(50);

// One worker and the photo that it is on. `process` and what follows is watched from the pool's own thread.
struct WorkerSlot {
    WorkerProcess worker;
    std::mutex guard;
    HANDLE process = nullptr; // to be ended when the photo takes too long; null: none
    ULONGLONG deadline = 0;   // 0: none
    bool isLate = false;
};

struct Pool {
    const PoolSettings &settings;
    const std::vector<PoolTask> &tasks;
    const ResultTaker &take;
    HANDLE job = nullptr;

    std::mutex guard; // over all that follows
    std::condition_variable changed;
    size_t next = 0, inWork = 0;
    int32_t threads = 0;
    uint64_t memory = 0; // of the photos in work
    bool isStopping = false;
    int failure = 0; // no worker can do anything
    std::string failureText;
};

static bool IsOver(const Pool &pool) {
    return pool.isStopping || IsCancelled() || pool.next == pool.tasks.size();
}

// No worker is started for nothing: killed at its very start, it could leave somebody who holds its pipe.
static bool IsPhotoLeft(Pool &pool) {
    const std::lock_guard<std::mutex> lock(pool.guard);
    return !IsOver(pool);
}

// Waits until the next photo's memory is free. False when there is none to begin.
static bool TakeTask(Pool &pool, size_t *task) {
    std::unique_lock<std::mutex> lock(pool.guard);
    const auto mayGoOn = [&] {
        return IsOver(pool) || pool.inWork == 0 ||
               pool.memory + pool.tasks[pool.next].memory <= pool.settings.memory;
    };
    while (!mayGoOn())
        pool.changed.wait_for(lock, kWatchPause);
    if (IsOver(pool))
        return false;
    *task = pool.next++;
    pool.inWork++;
    pool.memory += pool.tasks[*task].memory;
    return true;
}

static void GiveResult(Pool &pool, size_t task, const PhotoResult &result) {
    const std::lock_guard<std::mutex> lock(pool.guard);
    pool.inWork--;
    pool.memory -= pool.tasks[task].memory;
    if (!pool.take(task, result))
        pool.isStopping = true;
    pool.changed.notify_all();
}

static void StopPool(Pool &pool, int status, const std::string &why) {
    const std::lock_guard<std::mutex> lock(pool.guard);
    pool.isStopping = true;
    if (pool.failure == 0) {
        pool.failure = status;
        pool.failureText = why;
    }
    pool.changed.notify_all();
}

static void Watch(WorkerSlot &slot, HANDLE process, int64_t timeout) {
    const std::lock_guard<std::mutex> lock(slot.guard);
    slot.process = process;
    slot.deadline = process && timeout > 0 ? GetTickCount64() + static_cast<ULONGLONG>(timeout) : 0;
    if (process)
        slot.isLate = false;
}

// What a new worker says first, or why it says nothing.
static PhotoResult MakeWorker(Pool &pool, WorkerSlot &slot, bool *isHeard) {
    PhotoResult ready;
    MessageTexts texts;
    ready.state = PhotoState::kFailed;
    ready.status = kExitFile;
    if (!StartWorker(pool.settings.words, pool.job, &slot.worker, &ready.reason))
        return ready;
    ready.status = kExitPlugin;
    Watch(slot, slot.worker.process, 0);
    *isHeard = ReceiveTexts(slot.worker.fromWorker, &texts) && UnpackResult(texts, &ready);
    Watch(slot, nullptr, 0);
    if (!*isHeard)
        ready.reason = "a worker ended before its first photo";
    if (ready.state != PhotoState::kDone)
        EndWorker(&slot.worker, true);
    return ready;
}

// A worker that has said that it is ready. A start can fail where the system is short of something for a
// moment, so it is tried again; what a worker says itself is not.
static bool HaveWorker(Pool &pool, WorkerSlot &slot) {
    for (int left = kMostStarts; !slot.worker.process; Sleep(kStartPause)) {
        bool isHeard = false;
        const PhotoResult ready = MakeWorker(pool, slot, &isHeard);
        if (ready.state == PhotoState::kDone)
            return true;
        if (!isHeard && --left > 0 && !MustStopAtOnce())
            continue;
        if (!MustStopAtOnce())
            StopPool(pool, ready.status, ready.reason);
        return false;
    }
    return true;
}

static PhotoResult TellLost(const WorkerSlot &slot, DWORD status) {
    PhotoResult result;
    result.state = MustStopAtOnce() ? PhotoState::kCancelled : PhotoState::kFailed;
    result.status = kExitPlugin;
    char code[32];
    std::snprintf(code, sizeof(code), "0x%08lX", static_cast<unsigned long>(status));
    result.reason = result.state == PhotoState::kCancelled ? "cancelled"
                    : slot.isLate
                        ? "it took longer than --timeout allows"
                        : std::string("the plug-in crashed, or its process was ended (code ") + code + ")";
    return result;
}

static PhotoResult DoTask(Pool &pool, WorkerSlot &slot, const PoolTask &task) {
    PhotoResult result;
    MessageTexts texts;
    const ULONGLONG begun = GetTickCount64();
    Watch(slot, slot.worker.process, pool.settings.timeout);
    const bool isDone = SendTexts(slot.worker.toWorker, {ToUtf8(task.input), ToUtf8(task.output)}) &&
                        ReceiveTexts(slot.worker.fromWorker, &texts) && UnpackResult(texts, &result);
    Watch(slot, nullptr, 0);
    if (!isDone) {
        const DWORD id = slot.worker.id;
        result = TellLost(slot, EndWorker(&slot.worker, false));
        RemoveTemporary(NativePath(task.output), id);
    }
    result.milliseconds = static_cast<int64_t>(GetTickCount64() - begun);
    return result;
}

static void RunWorkerThread(Pool &pool, WorkerSlot &slot) {
    size_t task;
    while (IsPhotoLeft(pool) && HaveWorker(pool, slot) && TakeTask(pool, &task))
        GiveResult(pool, task, DoTask(pool, slot, pool.tasks[task]));
    EndWorker(&slot.worker, false);
    const std::lock_guard<std::mutex> lock(pool.guard);
    pool.threads--;
    pool.changed.notify_all();
}

static void EndOverdue(WorkerSlot &slot) {
    const std::lock_guard<std::mutex> lock(slot.guard);
    slot.isLate = slot.isLate || (slot.process && slot.deadline != 0 && GetTickCount64() > slot.deadline);
    if (slot.process && (slot.isLate || MustStopAtOnce()))
        TerminateProcess(slot.process, ERROR_PROCESS_ABORTED);
}

bool RunPool(const PoolSettings &settings, const std::vector<PoolTask> &tasks, const ResultTaker &take,
             int *status, std::string *why) {
    Pool pool{settings, tasks, take, MakeWorkerJob(), {}, {}, 0, 0, settings.jobs, 0, false, 0, {}};
    std::vector<WorkerSlot> slots(static_cast<size_t>(settings.jobs));
    std::vector<std::thread> threads;
    for (WorkerSlot &slot : slots)
        threads.emplace_back([&pool, &slot] { RunWorkerThread(pool, slot); });
    for (std::unique_lock<std::mutex> lock(pool.guard); pool.threads > 0;) {
        pool.changed.wait_for(lock, kWatchPause);
        lock.unlock();
        for (WorkerSlot &slot : slots)
            EndOverdue(slot);
        lock.lock();
    }
    for (std::thread &thread : threads)
        thread.join();
    if (pool.job)
        CloseHandle(pool.job);
    *status = pool.failure;
    *why = pool.failureText;
    return pool.failure == 0;
}

} // namespace host
