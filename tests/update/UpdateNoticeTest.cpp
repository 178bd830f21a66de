// When the maker is asked, with what, and what is made of the answer. The test program's own version is
// 7.65535.3.21.
#include "diag/Log.h"
#include "diag/ProcessLock.h"
#include "host/module/ModuleImports.h"
#include "storage/AppFolders.h"
#include "tests/storage/TemporaryFolder.h"
#include "tests/update/LoopbackServer.h"
#include "web/UpdateNotice.h"
#include "web/UpdateRecord.h"
#include "web/UpdateRequest.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <set>
#include <sstream>
#include <thread>
#include <utility>
#include <vector>
#include <windows.h>

#include <winhttp.h>

namespace {

constexpr int64_t kHour = 3600, kDay = 24 * kHour;
constexpr ULONGLONG kSlack = 1500; // milliseconds that a busy machine may add

std::string gAddress;
bool gAllowsPlain = true;

struct UpdateTest : ::testing::Test {
    TemporaryFolder folder;

    void SetUp() override {
        snprintf(gSettingsFolder, sizeof gSettingsFolder, "%s", folder.Path().c_str());
        gAllowsPlain = true;
        SetUpdateNotice(true);
    }
    void TearDown() override { Await(); }

    static void Await() {
        while (IsUpdateCheckRunning())
            Sleep(5);
    }
    static void Check(const std::string &address) {
        gAddress = address;
        StartUpdateCheck();
        Await();
    }
    static void SetLastAsked(int64_t secondsAgo) {
        UpdateRecord record = LoadUpdateRecord();
        record.lastAsked = static_cast<int64_t>(std::time(nullptr)) - secondsAgo;
        ASSERT_TRUE(SaveUpdateRecord(record));
    }
    static std::string Notice() {
        char text[100] = "none";
        return NewVersionKnown(text, sizeof text) ? text : "";
    }
    // What the service's answer alone amounts to.
    static UpdateAnswer Ask(const std::string &address) {
        UpdateRequest *request = nullptr;
        const UpdateAnswer answer = AskUpdateService({address.c_str(), gAllowsPlain}, "Test/1", &request);
        EndUpdateRequest(request);
        return answer;
    }
};

LoopbackServer::Answer Body(const std::string &body) {
    return [body](const ServedConnection &connection) { connection.Send(HttpAnswer(body)); };
}

const char kNotice[] = "A New Version of Brillatrix Pro is Available Online";

decltype(&WinHttpSetOption) gSetOption;

BOOL WINAPI SetHttpOption(HINTERNET handle, DWORD option, LPVOID value, DWORD size) {
    if (option == WINHTTP_OPTION_SECURE_PROTOCOLS)
        return FALSE;
    return gSetOption(handle, option, value, size);
}

// What the system reserves must be 0, and no headers have no length.
decltype(&WinHttpConnect) gConnect;
decltype(&WinHttpSendRequest) gSendRequest;

HINTERNET WINAPI Connect(HINTERNET session, LPCWSTR host, INTERNET_PORT port, DWORD reserved) {
    EXPECT_EQ(reserved, 0u);
    return gConnect(session, host, port, reserved);
}

BOOL WINAPI SendRequest(HINTERNET handle, LPCWSTR headers, DWORD length, LPVOID data, DWORD size, DWORD total,
                        DWORD_PTR context) {
    EXPECT_TRUE(!headers && !data && length + size + total == 0);
    return gSendRequest(handle, headers, length, data, size, total, context);
}

decltype(&GetProcAddress) gFindFunction;

FARPROC WINAPI FindFunction(HMODULE library, LPCSTR name) {
    FARPROC found = gFindFunction(library, name);
    const auto replace = [&](const char *wanted, auto *real, auto replacement) {
        if (reinterpret_cast<uintptr_t>(name) <= 0xFFFF || std::strcmp(name, wanted) != 0)
            return;
        *real = reinterpret_cast<decltype(replacement)>(reinterpret_cast<void *>(found));
        found = reinterpret_cast<FARPROC>(reinterpret_cast<void *>(replacement));
    };
    replace("WinHttpSetOption", &gSetOption, &SetHttpOption);
    replace("WinHttpConnect", &gConnect, &Connect);
    replace("WinHttpSendRequest", &gSendRequest, &SendRequest);
    return found;
}

} // namespace

UpdateService CurrentUpdateService() {
    return {gAddress.c_str(), gAllowsPlain};
}

TEST_F(UpdateTest, OnlyAGoodNewerVersionIsTold) {
    const std::string newer[] = {"7.65535.3.22", "8", "7.65535.4\n", "8.1\r\n"};
    std::istringstream others(
        "7.65535.3.21|7.65535.3.20|6.65535.65535.65535||8.|.8|8..1|9.9.9.9.9|99999|000008|8.0\n\n|"
        "8.0\r|\r\n| 8.0|8.0a|-8|<html>8.0</html>");
    const auto expectTold = [this](const std::string &body, const std::string &notice) {
        ASSERT_TRUE(SaveUpdateRecord({kUpdateRecordMagic, 1, 0, {}}));
        const LoopbackServer server(Body(body));
        Check(server.Address());
        EXPECT_EQ(server.Requests().size(), 1u) << body;
        EXPECT_EQ(Notice(), notice) << body;
    };
    for (const std::string &body : newer)
        expectTold(body, kNotice);
    for (std::string body; std::getline(others, body, '|');)
        expectTold(body, "");
}

// The good answer outlives a bad one, a new start and an answer of the same version; the switch and an update
// of the product end it.
TEST_F(UpdateTest, TheNoticeStaysUntilItIsNoLongerTrueOrWanted) {
    std::string refusing;
    {
        const LoopbackServer gone(Body("8.1"));
        refusing = gone.Address();
    }
    Check(refusing);
    EXPECT_EQ(Notice(), "");
    SetLastAsked(kDay);
    const LoopbackServer good(Body("8.1")), bad(Body("no"));
    Check(good.Address());
    EXPECT_EQ(Notice(), kNotice);
    SetLastAsked(kDay);
    Check(bad.Address());
    EXPECT_EQ(Notice(), kNotice);
    char tooSmall[sizeof kNotice - 1] = "x";
    EXPECT_FALSE(NewVersionKnown(tooSmall, sizeof tooSmall));
    EXPECT_STREQ(tooSmall, "x");
    SetUpdateNotice(false);
    EXPECT_EQ(Notice(), "");
    SetUpdateNotice(true);
    EXPECT_EQ(Notice(), kNotice);
}

TEST_F(UpdateTest, SendsProductAndVersionAndNothingElse) {
    const LoopbackServer server(Body("8"));
    host::ImportHooks hooks;
    gFindFunction = GetProcAddress;
    host::ReplaceImport(GetModuleHandleA(nullptr), "GetProcAddress", FindFunction, &hooks);
    Check(server.Address());
    host::RestoreImports(&hooks);
    EXPECT_TRUE(gConnect && gSendRequest);
    ASSERT_EQ(server.Requests().size(), 1u);
    const std::string host = server.Address().substr(7, server.Address().rfind('/') - 7);
    std::set<std::string> lines;
    std::istringstream request(server.Requests()[0]);
    for (std::string line; std::getline(request, line, '\n');)
        lines.insert(line.substr(0, line.find('\r')));
    for (const char *harmless : {"Connection: Close", "Cache-Control: no-cache", "Pragma: no-cache", ""})
        lines.erase(harmless);
    EXPECT_EQ(lines, (std::set<std::string>{"GET /version.txt HTTP/1.1",
                                            "User-Agent: BrillatrixPro/7.65535.3.21", "Host: " + host}));
}

TEST_F(UpdateTest, AsksOnlyWhenSwitchedOnAndOnceADay) {
    const LoopbackServer server(Body("8"));
    const auto asks = [&server] {
        const size_t before = server.Requests().size();
        Check(server.Address());
        return server.Requests().size() - before;
    };
    DeleteFileA((folder / "UpdateNotice.bin").c_str());
    EXPECT_FALSE(IsUpdateNoticeOn()) << "it must be asked for";
    EXPECT_EQ(asks(), 0u);
    EXPECT_TRUE(folder.Names().empty());
    SetUpdateNotice(true);
    EXPECT_EQ(asks(), 1u);
    EXPECT_EQ(asks(), 0u);
    const struct {
        int64_t secondsAgo;
        size_t asked;
    } cases[] = {{kDay - 60, 0}, {kDay, 1}, {30 * kDay, 1}, {-kHour, 0}, {-kDay - 60, 1}, {-5000 * kDay, 1}};
    for (const auto &c : cases) {
        SetLastAsked(c.secondsAgo);
        EXPECT_EQ(asks(), c.asked) << c.secondsAgo;
        EXPECT_EQ(asks(), 0u) << c.secondsAgo;
    }
    SetLastAsked(kDay);
    SetUpdateNotice(false);
    EXPECT_EQ(asks(), 0u);
    WriteWholeFile(folder / "UpdateNotice.bin", std::string(24, '\xFF'));
    EXPECT_FALSE(IsUpdateNoticeOn()) << "a damaged file";
    EXPECT_EQ(asks(), 0u);
    // A question that cannot be noted would be asked at every opening.
    ASSERT_TRUE(SetUpdateNotice(true));
    SetFileAttributesA((folder / "UpdateNotice.bin").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(SetUpdateNotice(false));
    EXPECT_EQ(asks(), 0u);
    SetFileAttributesA((folder / "UpdateNotice.bin").c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(UpdateTest, OddAnswersAreNone) {
    const std::string longest(kMostUpdateAnswer, '1');
    const LoopbackServer elsewhere(Body("9"));
    const std::string location = "Location: " + elsewhere.Address() + "\r\n";
    const LoopbackServer full(Body(longest)), long1(Body(longest + "1")),
        huge(Body(std::string(1 << 20, '1'))),
        redirect([&](const ServedConnection &c) { c.Send(HttpAnswer("9", "302 Found", location)); }),
        missing([](const ServedConnection &c) { c.Send(HttpAnswer("9", "404 Not Found")); }),
        noHttp([](const ServedConnection &c) { c.Send("9.9\r\n\r\n"); }),
        silent([](const ServedConnection &) {});
    EXPECT_EQ(Ask(full.Address()).length, kMostUpdateAnswer);
    for (const LoopbackServer *server : {&long1, &huge})
        EXPECT_STREQ(Ask(server->Address()).failure, "it was too long");
    EXPECT_STREQ(Ask(redirect.Address()).failure, "it was no plain answer");
    EXPECT_EQ(Ask(redirect.Address()).code, 302u);
    EXPECT_EQ(elsewhere.Requests().size(), 0u) << "a redirection was followed";
    EXPECT_EQ(Ask(missing.Address()).code, 404u);
    EXPECT_NE(Ask(silent.Address()).failure, nullptr);
    EXPECT_NE(Ask(noHttp.Address()).failure, nullptr);
}

TEST_F(UpdateTest, OnlySecureAddressesAreAsked) {
    const LoopbackServer server(Body("9"));
    gAllowsPlain = false;
    const std::string local = "http://localhost" + server.Address().substr(16);
    for (const std::string &address :
         {server.Address(), std::string("ftp://127.0.0.1/"), std::string("nonsense"), std::string(2000, 'h')})
        EXPECT_STREQ(Ask(address).failure, "the address is not one to ask") << address;
    gAllowsPlain = true;
    EXPECT_STREQ(Ask(local).failure, "the address is not one to ask");
    EXPECT_EQ(server.Requests().size(), 0u);
    gAddress = "";
    EXPECT_FALSE(CanNoticeUpdates());
    EXPECT_FALSE(IsUpdateNoticeOn());
}

// Slow in every way that a server can be; the limit is one for all of it. Some systems hold on to a
// connection for as long as something comes: ending it has a limit, too.
TEST_F(UpdateTest, FiveSecondsAreTheLimit) {
    const auto trickle = [](const std::string &head, const char *drop) {
        return [head, drop](const ServedConnection &connection) {
            Sleep(2500); // each step alone would be in time
            for (bool open = connection.Send(head); open; open = connection.Send(drop))
                Sleep(200);
        };
    };
    const LoopbackServer::Answer slow[] = {
        [](const ServedConnection &connection) { connection.AwaitClose(); },
        trickle("HTTP/1.1 200 OK\r\nContent-Length: 60\r\n\r\n", "1"),
        trickle("HTTP/1.1 200 OK\r\n", "X-More: 1\r\n")};
    std::vector<std::thread> clients;
    std::vector<std::pair<UpdateAnswer, ULONGLONG>> outcomes(std::size(slow));
    std::vector<ULONGLONG> endings(std::size(slow));
    for (size_t i = 0; i < std::size(slow); ++i)
        clients.emplace_back([&, i] {
            auto server = std::make_unique<LoopbackServer>(slow[i]);
            const std::string address = server->Address();
            const ULONGLONG begun = GetTickCount64();
            UpdateRequest *request = nullptr;
            outcomes[i].first = AskUpdateService({address.c_str(), true}, "Test/1", &request);
            outcomes[i].second = GetTickCount64() - begun;
            const ULONGLONG answered = GetTickCount64();
            EndUpdateRequest(request);
            endings[i] = GetTickCount64() - answered;
            server.reset();
        });
    for (std::thread &client : clients)
        client.join();
    for (const auto &[answer, took] : outcomes) {
        EXPECT_STREQ(answer.failure, "it took too long");
        EXPECT_GE(took, kUpdateTimeLimit - 100);
        EXPECT_LE(took, kUpdateTimeLimit + kSlack);
    }
    for (const ULONGLONG took : endings)
        EXPECT_LE(took, kUpdateTimeLimit + kSlack);
}

TEST_F(UpdateTest, StartingACheckWaitsForNothing) {
    const LoopbackServer slow([](const ServedConnection &connection) { connection.AwaitClose(); });
    gAddress = slow.Address();
    const ULONGLONG begun = GetTickCount64();
    StartUpdateCheck();
    StartUpdateCheck();
    EXPECT_LT(GetTickCount64() - begun, 500u);
    EXPECT_TRUE(IsUpdateCheckRunning());
    EXPECT_EQ(Notice(), "");
    Await();
    EXPECT_EQ(slow.Requests().size(), 1u);
}

TEST_F(UpdateTest, SwitchingOffEndsTheRequestThatIsOnItsWay) {
    auto slow = std::make_unique<LoopbackServer>([](const ServedConnection &c) { c.AwaitClose(); });
    const std::string address = slow->Address();
    UpdateRequest *request = nullptr;
    UpdateAnswer answer = {};
    std::thread asking([&] { answer = AskUpdateService({address.c_str(), true}, "Test/1", &request); });
    while (slow->Requests().empty())
        Sleep(5);
    const ULONGLONG begun = GetTickCount64();
    EXPECT_TRUE(SetUpdateNotice(false));
    asking.join();
    EXPECT_LT(GetTickCount64() - begun, kSlack);
    EXPECT_STREQ(answer.failure, kUpdateUnwanted);
    EXPECT_STREQ(Ask(address).failure, kUpdateUnwanted);
    EXPECT_EQ(slow->Requests().size(), 1u);
    const auto wake = [](HANDLE) -> BOOL {
        ADD_FAILURE() << "a request that has its answer";
        return TRUE;
    };
    host::ImportHooks hooks;
    host::ReplaceImport<BOOL(WINAPI *)(HANDLE)>(GetModuleHandleA(nullptr), "SetEvent", wake, &hooks);
    SetUpdateNotice(false);
    host::RestoreImports(&hooks);
    slow.reset();
    EndUpdateRequest(request);
}

// Another process, which a thread stands for, has read the record and is about to write it.
TEST_F(UpdateTest, ChangesOfTwoProcessesBothStay) {
    for (const DWORD held : {200u, kProcessLockLimit + 500u}) {
        const bool isInTime = held < kProcessLockLimit;
        ASSERT_TRUE(SaveUpdateRecord(kDefaultUpdateRecord));
        std::atomic<bool> hasRead = false;
        std::thread other([&] {
            void *lock = TakeProcessLock("update record", gSettingsFolder);
            UpdateRecord record = LoadUpdateRecord();
            hasRead = true;
            Sleep(held);
            record.newest = {{8, 1, 0, 0}};
            SaveUpdateRecord(record);
            ReleaseProcessLock(lock);
        });
        while (!hasRead)
            Sleep(1);
        const ULONGLONG begun = GetTickCount64();
        EXPECT_EQ(SetUpdateNotice(true), isInTime);
        EXPECT_LT(GetTickCount64() - begun, kProcessLockLimit + 400);
        other.join();
        EXPECT_EQ(LoadUpdateRecord().newest.parts[0], 8);
        EXPECT_EQ(LoadUpdateRecord().isOn, isInTime ? 1u : 0u);
    }
    for (const DWORD held : {150u, 900u}) { // by a program that lets nobody in
        ASSERT_TRUE(SaveUpdateRecord({kUpdateRecordMagic, 0, 0, {{9, 1, 0, 0}}}));
        const HANDLE file = CreateFileA((folder / "UpdateNotice.bin").c_str(), GENERIC_READ, 0, nullptr,
                                        OPEN_EXISTING, 0, nullptr);
        std::thread holder([&] { Sleep(held), CloseHandle(file); });
        EXPECT_EQ(SetUpdateNotice(true), held < 500);
        holder.join();
        EXPECT_EQ(LoadUpdateRecord().isOn, held < 500 ? 1u : 0u);
        EXPECT_EQ(LoadUpdateRecord().newest.parts[0], 9) << "the record must not be lost";
    }
}

// A system that knows no good protocol must not ask with a bad one.
TEST_F(UpdateTest, WithoutAGoodProtocolNobodyIsAsked) {
    const LoopbackServer server(Body("9"));
    host::ImportHooks hooks;
    gFindFunction = GetProcAddress;
    host::ReplaceImport(GetModuleHandleA(nullptr), "GetProcAddress", FindFunction, &hooks);
    EXPECT_STREQ(Ask("https" + server.Address().substr(4)).failure, "the system cannot ask");
    host::RestoreImports(&hooks);
}

// What is logged: failures, in the words of all others, and nothing else.
TEST_F(UpdateTest, OnlyFailuresAreLogged) {
    gLogFolderPath = gSettingsFolder;
    OpenLog(nullptr, 0);
    const LoopbackServer good(Body("8")), bad(Body("no"));
    for (const LoopbackServer *server : {&good, &bad}) {
        SetLastAsked(kDay);
        Check(server->Address());
    }
    CloseLog();
    std::string text = ReadWholeFile(folder / "Brillatrix Pro_00.log");
    std::erase(text, '\0');
    EXPECT_EQ(text.find("Debug Message"), text.rfind("Debug Message")) << text;
    EXPECT_NE(text.find("'Debug:  Unexpected Error' - 'AskUpdateService() failed with Address = '" +
                        bad.Address() + "', Code = '0' and Reason = 'it is no version number''"),
              std::string::npos)
        << text;
}
