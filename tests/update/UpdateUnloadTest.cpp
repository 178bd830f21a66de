// A module that is unloaded, and a process that ends, while the answer is still awaited.
#include "tests/storage/TemporaryFolder.h"
#include "tests/update/LoopbackServer.h"
#include "web/UpdateRequest.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace {

constexpr int kExitCode = 7;

// Returns when the module has asked; null when it could not.
HMODULE AskFromModule(const LoopbackServer &server, const TemporaryFolder &folder) {
    const HMODULE module = LoadLibraryA("update_module.dll");
    void *begin = module ? reinterpret_cast<void *>(GetProcAddress(module, "BeginCheck")) : nullptr;
    if (!begin)
        return nullptr;
    reinterpret_cast<void (*)(const char *, const char *)>(begin)(folder.Path().c_str(),
                                                                  server.Address().c_str());
    for (int i = 0; i < 1000 && server.Requests().empty(); i++)
        Sleep(5);
    return server.Requests().size() == 1 ? module : nullptr;
}

void Keep(const ServedConnection &connection) {
    connection.AwaitClose();
}

} // namespace

TEST(UpdateUnload, TheModuleMayBeUnloadedAtAnyTime) {
    const TemporaryFolder folder;
    const LoopbackServer server(Keep);
    const HMODULE module = AskFromModule(server, folder);
    ASSERT_NE(module, nullptr);
    const ULONGLONG begun = GetTickCount64();
    FreeLibrary(module);
    EXPECT_LT(GetTickCount64() - begun, 500u);
    Sleep(kUpdateTimeLimit + 1000); // the thread gives up and ends; a module gone by then would crash it
}

// In a process of its own.
TEST(UpdateUnloadDeathTest, TheProcessEndsAtOnce) {
    const ULONGLONG begun = GetTickCount64();
    EXPECT_EXIT(
        {
            const TemporaryFolder folder;
            const LoopbackServer server(Keep);
            ExitProcess(AskFromModule(server, folder) ? kExitCode : 0);
        },
        testing::ExitedWithCode(kExitCode), "");
    EXPECT_LT(GetTickCount64() - begun, kUpdateTimeLimit);
}
