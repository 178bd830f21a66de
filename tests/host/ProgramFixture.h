// The program, run as a user runs it.
#pragma once

#include "tests/host/TestFiles.h"

#include "host/base/SystemText.h"

#include <windows.h>

#include <algorithm>

constexpr DWORD kLongestRun = 60000; // milliseconds

struct ProgramRun {
    DWORD status;
    std::string out;
    std::string err;
};

inline HANDLE OpenForChild(const std::wstring &path) {
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    return CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS, 0, nullptr);
}

inline std::string TakeText(const std::wstring &path) {
    const host::Bytes bytes = ReadBytes(path);
    DeleteFileW(path.c_str());
    return {bytes.begin(), bytes.end()};
}

// Photos and results in a folder of their own, which also holds the program's memory.
class ProgramTest : public testing::Test {
protected:
    TestFolder folder;
    host::Picture photo;
    HANDLE standardInput = nullptr;

    void SetUp() override {
        GetDesktopWindow(); // Wine's desktop process would else be started by the program, and keep its files
                            // open
        photo = MakeTestPicture(40, 30, 8, 3, false);
        std::string why;
        ASSERT_TRUE(host::WritePicture(folder.File(L"in.png"), photo, {}, &why)) << why;
        SetEnvironmentVariableW(L"BRILLATRIX_HOST_FOLDER", folder.path.c_str());
    }
    void TearDown() override {
        SetEnvironmentVariableW(L"BRILLATRIX_HOST_FOLDER", nullptr);
        SetEnvironmentVariableW(L"INVERT_FILTER", nullptr);
    }
    PROCESS_INFORMATION Begin(const std::vector<std::wstring> &arguments, DWORD flags) {
        std::wstring line = L"\"" + ProgramFile(L"brillatrix.exe") + L"\"";
        for (const std::wstring &argument : arguments)
            line += L" \"" + argument + L"\"";
        STARTUPINFOW startup = {};
        startup.cb = sizeof(startup);
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = standardInput;
        startup.hStdOutput = OpenForChild(folder.File(L"out.txt"));
        startup.hStdError = OpenForChild(folder.File(L"err.txt"));
        PROCESS_INFORMATION process = {};
        const auto start = [&] {
            return CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, flags, nullptr, nullptr,
                                  &startup, &process);
        };
        EXPECT_TRUE(start() || start()); // once in some hundred times Wine starts none
        CloseHandle(startup.hStdOutput);
        CloseHandle(startup.hStdError);
        return process;
    }
    ProgramRun End(const PROCESS_INFORMATION &process) {
        ProgramRun run = {};
        EXPECT_EQ(WaitForSingleObject(process.hProcess, kLongestRun), WAIT_OBJECT_0);
        TerminateProcess(process.hProcess, 99);
        GetExitCodeProcess(process.hProcess, &run.status);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
        run.out = TakeText(folder.File(L"out.txt"));
        run.err = TakeText(folder.File(L"err.txt"));
        return run;
    }
    ProgramRun Run(const std::vector<std::wstring> &arguments) { return End(Begin(arguments, 0)); }
    // With the test filter.
    ProgramRun Invert(std::vector<std::wstring> arguments, const wchar_t *order = L"") {
        SetEnvironmentVariableW(L"INVERT_FILTER", order);
        arguments.insert(arguments.end(), {L"--plugin", ProgramFile(L"InvertFilter.8bf")});
        return Run(arguments);
    }
    // No file but the photo, the program's memory and the ones named.
    void ExpectFiles(std::vector<std::wstring> names) {
        names.insert(names.end(), {L"in.png"});
        std::vector<std::wstring> found = folder.List();
        std::erase(found, L"Registry.bin");
        EXPECT_TRUE(std::is_permutation(found.begin(), found.end(), names.begin(), names.end()));
    }
};

inline bool Holds(const std::string &text, const std::string &part) {
    return text.find(part) != std::string::npos;
}

// What the system does in the program when its user presses Ctrl+C. Without a console the key cannot be
// pressed, so the system's own routine for it is started there.
inline bool PressCtrlC(HANDLE process) {
    const HMODULE system = GetModuleHandleW(L"kernelbase.dll");
    void *routine = system ? reinterpret_cast<void *>(GetProcAddress(system, "CtrlRoutine")) : nullptr;
    if (!routine)
        return false;
    const HANDLE thread =
        CreateRemoteThread(process, nullptr, 0, reinterpret_cast<LPTHREAD_START_ROUTINE>(routine),
                           reinterpret_cast<void *>(uintptr_t{CTRL_C_EVENT}), 0, nullptr);
    if (thread)
        CloseHandle(thread);
    return thread != nullptr;
}
