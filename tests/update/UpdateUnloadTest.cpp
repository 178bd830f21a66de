// A module that is unloaded, and a process that ends, while the answer is still awaited.
#include "plugin/UpdateRequest.h"
#include "tests/storage/TemporaryFolder.h"
#include "tests/update/LoopbackServer.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace {

constexpr DWORD kExitCode = 7;

void WaitForRequest(const LoopbackServer &server) {
    for (int i = 0; i < 1000 && server.Requests().empty(); i++)
        Sleep(5);
    ASSERT_EQ(server.Requests().size(), 1u);
}

HMODULE BeginCheckInModule(const std::string &settingsFolder, const std::string &address) {
    const HMODULE module = LoadLibraryA("update_module.dll");
    void *begin = module ? reinterpret_cast<void *>(GetProcAddress(module, "BeginCheck")) : nullptr;
    if (!begin)
        return nullptr;
    reinterpret_cast<void (*)(const char *, const char *)>(begin)(settingsFolder.c_str(), address.c_str());
    return module;
}

LoopbackServer::Answer Silence() {
    return [](const ServedConnection &connection) { connection.AwaitClose(); };
}

} // namespace

TEST(UpdateUnload, TheModuleMayBeUnloadedAtAnyTime) {
    const TemporaryFolder folder;
    const LoopbackServer server(Silence());
    const HMODULE module = BeginCheckInModule(folder.Path(), server.Address());
    ASSERT_NE(module, nullptr);
    const ULONGLONG begun = GetTickCount64();
    FreeLibrary(module);
    EXPECT_LT(GetTickCount64() - begun, 500u);
    WaitForRequest(server);
    Sleep(kUpdateTimeLimit + 1000); // the thread gives up and ends; a module gone by then would crash it
}

// Run by the test below in a process of its own.
TEST(UpdateUnload, DISABLED_Child) {
    char folder[MAX_PATH] = "", address[MAX_PATH] = "";
    GetEnvironmentVariableA("UPDATE_FOLDER", folder, MAX_PATH);
    GetEnvironmentVariableA("UPDATE_ADDRESS", address, MAX_PATH);
    ASSERT_NE(BeginCheckInModule(folder, address), nullptr);
    Sleep(500);
    ExitProcess(kExitCode);
}

TEST(UpdateUnload, TheProcessEndsAtOnce) {
    const TemporaryFolder folder;
    const LoopbackServer server(Silence());
    SetEnvironmentVariableA("UPDATE_FOLDER", folder.Path().c_str());
    SetEnvironmentVariableA("UPDATE_ADDRESS", server.Address().c_str());
    char program[MAX_PATH];
    GetModuleFileNameA(nullptr, program, MAX_PATH);
    std::string line = program;
    line += " --gtest_also_run_disabled_tests --gtest_filter=UpdateUnload.DISABLED_Child";
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    ASSERT_TRUE(CreateProcessA(program, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                               &process));
    WaitForRequest(server);
    const ULONGLONG begun = GetTickCount64();
    EXPECT_EQ(WaitForSingleObject(process.hProcess, 20000), WAIT_OBJECT_0);
    EXPECT_LT(GetTickCount64() - begun, 3000u);
    DWORD code = 0;
    GetExitCodeProcess(process.hProcess, &code);
    EXPECT_EQ(code, kExitCode);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
}
