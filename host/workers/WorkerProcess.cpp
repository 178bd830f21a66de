#include "host/workers/WorkerProcess.h"

#include "host/base/CommandLine.h"
#include "host/base/SystemText.h"

#include <mutex>

namespace host {

constexpr DWORD kLongestEnd = 5000; // milliseconds

HANDLE MakeWorkerJob() {
    const HANDLE job = CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (job)
        SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof(limits));
    return job;
}

struct WorkerEnds {
    HANDLE in = nullptr, out = nullptr, errors = nullptr;
};

static void Close(HANDLE *handle) {
    if (*handle && *handle != INVALID_HANDLE_VALUE)
        CloseHandle(*handle);
    *handle = nullptr;
}

static bool MakePipes(WorkerProcess *worker, WorkerEnds *ends) {
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    ends->errors = CreateFileW(L"NUL", GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                               OPEN_EXISTING, 0, nullptr);
    return CreatePipe(&ends->in, &worker->toWorker, &inherited, 0) &&
           CreatePipe(&worker->fromWorker, &ends->out, &inherited, 0) &&
           SetHandleInformation(worker->toWorker, HANDLE_FLAG_INHERIT, 0) &&
           SetHandleInformation(worker->fromWorker, HANDLE_FLAG_INHERIT, 0);
}

static bool StartProcess(const std::vector<std::wstring> &words, const WorkerEnds &ends, HANDLE job,
                         WorkerProcess *worker) {
    std::wstring program(32768, L'\0');
    program.resize(GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
    std::vector<std::wstring> all = words;
    all.insert(all.begin(), program);
    std::wstring line = JoinWords(all);
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = ends.in;
    startup.hStdOutput = ends.out;
    startup.hStdError = ends.errors;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE,
                        CREATE_NO_WINDOW | CREATE_SUSPENDED, nullptr, nullptr, &startup, &process))
        return false;
    if (job)
        AssignProcessToJobObject(job, process.hProcess);
    ResumeThread(process.hThread);
    CloseHandle(process.hThread);
    worker->process = process.hProcess;
    worker->id = process.dwProcessId;
    return true;
}

// One at a time: a worker that inherited another one's pipe would keep it open.
static std::mutex gStarting;

bool StartWorker(const std::vector<std::wstring> &words, HANDLE job, WorkerProcess *worker,
                 std::string *why) {
    const std::lock_guard<std::mutex> guard(gStarting);
    WorkerEnds ends;
    const bool isStarted = MakePipes(worker, &ends) && StartProcess(words, ends, job, worker);
    if (!isStarted)
        *why = "a worker cannot be started: " + SystemErrorText(GetLastError());
    Close(&ends.in);
    Close(&ends.out);
    Close(&ends.errors);
    if (!isStarted) {
        Close(&worker->toWorker);
        Close(&worker->fromWorker);
    }
    return isStarted;
}

DWORD EndWorker(WorkerProcess *worker, bool atOnce) {
    DWORD status = 0;
    Close(&worker->toWorker); // it ends when nothing comes any more
    if (worker->process) {
        if (WaitForSingleObject(worker->process, atOnce ? 0 : kLongestEnd) != WAIT_OBJECT_0)
            TerminateProcess(worker->process, ERROR_PROCESS_ABORTED);
        WaitForSingleObject(worker->process, kLongestEnd);
        GetExitCodeProcess(worker->process, &status);
    }
    Close(&worker->process);
    Close(&worker->fromWorker);
    return status;
}

} // namespace host
