#include "diag/Log.h"

#include "diag/ErrorReport.h"
#include "diag/LogLines.h"
#include "diag/LogState.h"
#include "tests/diag/LogFixture.h"

#include <algorithm>
#include <ctime>
#include <map>
#include <regex>
#include <thread>

namespace {

using Log = LogFixture;

// "on Saturday, November 21, 2026 at 16:12:09": a time that is now, whatever moment the log took.
bool IsNow(const std::string &text) {
    for (time_t when = time(nullptr) - 5; when <= time(nullptr); ++when) {
        char now[100];
        strftime(now, sizeof now, "on %A, %B %d, %Y at %H:%M:%S", localtime(&when));
        if (text == now)
            return true;
    }
    return false;
}

TEST_F(Log, IsUtf16WithHeaderAndClosingLine) {
    Open();
    EXPECT_EQ(gLogState.path, LogPath());
    WriteLogLine("plain %u\n", 5u);
    const size_t before = ReadWholeFile(LogPath()).size();
    WriteLogLine("\xE9\x80");
    const std::string wide = ReadWholeFile(LogPath()).substr(before);
    EXPECT_TRUE(GetACP() != 1252 || wide == std::string("\xE9\x00\xAC\x20", 4));
    CloseLog();
    std::smatch parts;
    const std::string text = ReadLogText(LogPath());
    ASSERT_TRUE(
        std::regex_match(text, parts,
                         std::regex("Brillatrix Pro version 7\\.65535\\.3\\.21 \\(64 bit Release\\) Log "
                                    "opened ([^.]*)\\.\n\nplain 5\n[^\n]+\nBrillatrix Pro Log closed "
                                    "([^.]*)\\.\n")))
        << text;
    EXPECT_TRUE(IsNow(parts[1]) && IsNow(parts[2])) << text;
}

TEST_F(Log, LinesOfEightThreadsAreWhole) {
    Open();
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < 8; ++t)
        threads.emplace_back([t] {
            for (unsigned i = 0; i < 200; ++i)
                ReportError({t, kDebugMessage, 0}, kStopIcon, "t", "%u %s", i,
                            std::string(i * 7, static_cast<char>('a' + t)).c_str());
        });
    for (std::thread &thread : threads)
        thread.join();
    const std::vector<std::string> lines = LinesSoFar();
    ASSERT_EQ(lines.size(), 1600u);
    std::map<unsigned, unsigned> next;
    for (const std::string &line : lines) {
        unsigned t = 99;
        ASSERT_EQ(sscanf(line.c_str(), "TIME : Line %u:", &t), 1) << line;
        const unsigned i = next[t]++;
        ASSERT_EQ(line, "TIME : Line " + std::to_string(t) + ": Debug Message: 't' - '" + std::to_string(i) +
                            " " + std::string(i * 7, static_cast<char>('a' + t)) + "'");
    }
}

// A full disk must cost no more than the line it befalls.
TEST_F(Log, EachLineIsFlushedAndAFailureLosesOneLineAtMost) {
    Open();
    for (const char *call : {"FlushFileBuffers", "WriteFile"}) {
        FailNextCall(call, ERROR_DISK_FULL);
        WriteLogLine("%s\n", call);
        EXPECT_TRUE(FailureHappened()) << call;
    }
    WriteLogLine("next\n");
    EXPECT_EQ(LinesSoFar(), (std::vector<std::string>{"FlushFileBuffers", "next"}));
}

TEST_F(Log, NothingFollowsTheClosingLine) {
    Open();
    std::atomic<bool> stop = false;
    std::thread writer([&] {
        while (!stop)
            WriteLogLine("line\n");
    });
    Sleep(50);
    CloseLog();
    Sleep(20);
    stop = true;
    writer.join();
    CloseLog();
    const std::vector<std::string> lines = LinesSoFar();
    EXPECT_EQ(lines.back().rfind("Brillatrix Pro Log closed on ", 0), 0u) << lines.back();
}

// A failed opening counts as the one opening of the process, too.
TEST_F(Log, OpensOncePerProcess) {
    const std::string missing = folder / "missing";
    for (const bool fails : {false, true}) {
        ForgetLog();
        gLogFolderPath = fails ? missing.c_str() : folder.Path().c_str();
        Open();
        CloseLog();
        if (fails)
            MakeFolder(missing);
        const std::string closed = ReadWholeFile(LogPath());
        Open();
        if (fails)
            ContinueLog();
        WriteLogLine("lost\n");
        EXPECT_EQ(ReadWholeFile(LogPath()), closed);
    }
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"Brillatrix Pro_00.log", "missing"}));
    EXPECT_FALSE(Exists(missing + "\\Brillatrix Pro_00.log"));
    ReportError({1, kUserMessage, 0}, kStopIcon, "t", "still shown");
    EXPECT_EQ(TakeBoxes().size(), 1u);
}

// Between two runs of a host, other hosts start and move the log up, or a person tidies up.
TEST_F(Log, GoesOnWithTheNextRunInItsOwnFile) {
    const std::string other = "another process's log", moved = folder / "Brillatrix Pro_01.log";
    const struct {
        bool isMoved, isDeleted, isReplaced;
        std::string goesOn; // where; empty: nowhere
        int headers;
    } cases[] = {{false, false, false, LogPath(), 2},
                 {true, false, true, moved, 2},
                 {false, true, true, "", 0},
                 {false, true, false, LogPath(), 1}};
    for (const auto &c : cases) {
        ForgetLog();
        DeleteFileA(moved.c_str());
        DeleteFileA(LogPath().c_str());
        gLogFolderPath = folder.Path().c_str();
        Open();
        ContinueLog(); // it is open
        CloseLog();
        if (c.isMoved)
            MoveFileA(LogPath().c_str(), moved.c_str());
        if (c.isDeleted)
            DeleteFileA(LogPath().c_str());
        if (c.isReplaced)
            WriteWholeFile(LogPath(), other);
        ContinueLog();
        WriteLogLine("second run\n");
        CloseLog();
        if (c.isReplaced) {
            EXPECT_EQ(ReadWholeFile(LogPath()), other);
        }
        if (c.goesOn.empty())
            continue;
        const std::vector<std::string> lines = Lines(ReadLogText(c.goesOn));
        EXPECT_EQ(std::count(lines.begin(), lines.end(), "second run"), 1);
        EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                                [](const std::string &line) { return line.find("Log opened") != line.npos; }),
                  c.headers);
    }
}

constexpr char kFolderVariable[] = "BRX_LOG_FOLDER";

void LogAsOneOfMany(const char *folder) {
    ForgetLog();
    gLogFolderPath = folder;
    OpenLog(nullptr, GetCurrentThreadId());
    for (int i = 0; i < 20; ++i) {
        WriteLogLine("%lu\n", GetCurrentProcessId());
        Sleep(5);
    }
    CloseLog();
}

// Several hosts start at once: this test starts itself.
TEST_F(Log, ProcessesThatStartAtOnceNeverShareAFile) {
    char shared[MAX_PATH];
    if (GetEnvironmentVariableA(kFolderVariable, shared, sizeof shared) > 0)
        return LogAsOneOfMany(shared);
    constexpr size_t kProcesses = 5;
    char program[MAX_PATH];
    GetModuleFileNameA(nullptr, program, sizeof program);
    std::string command = std::string("\"") + program + "\" --gtest_brief=1 --gtest_filter=*NeverShareAFile";
    SetEnvironmentVariableA(kFolderVariable, folder.Path().c_str());
    HANDLE processes[kProcesses];
    for (HANDLE &process : processes) {
        STARTUPINFOA start = {};
        start.cb = sizeof start;
        PROCESS_INFORMATION made = {};
        ASSERT_TRUE(CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                   &start, &made));
        CloseHandle(made.hThread);
        process = made.hProcess;
    }
    SetEnvironmentVariableA(kFolderVariable, nullptr);
    for (const HANDLE process : processes) {
        EXPECT_EQ(WaitForSingleObject(process, 30000), WAIT_OBJECT_0);
        CloseHandle(process);
    }
    ASSERT_EQ(folder.Names().size(), kProcesses);
    for (const std::string &name : folder.Names()) {
        const std::vector<std::string> lines = Lines(ReadLogText(folder / name));
        ASSERT_EQ(lines.size(), 24u) << name;
        EXPECT_EQ(std::count(lines.begin(), lines.end(), lines[2]), 20) << name;
    }
}

// Where the log of another process cannot be moved out of the way, there is none, rather than one for two.
TEST_F(Log, ALogThatAnotherProcessWritesIsLeftToIt) {
    const HANDLE others =
        CreateFileA(LogPath().c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, CREATE_NEW, 0, nullptr);
    DWORD written = 0;
    WriteFile(others, "others", 6, &written, nullptr);
    MakeFolder(folder / "Brillatrix Pro_09.log\\inside"); // ends the moving
    Open();
    WriteLogLine("ours\n");
    CloseHandle(others);
    EXPECT_EQ(ReadWholeFile(LogPath()), "others");
}

// With the first log still open, a second opening writes its failures there.
TEST_F(Log, OpeningFailuresAreReported) {
    Open();
    const std::string missing = folder / "missing";
    gLogState.setUpDone = false;
    gLogFolderPath = missing.c_str();
    Open();
    gLogState.setUpDone = false;
    gLogFolderPath = "";
    Open();
    const std::vector<std::string> lines = LinesSoFar();
    ASSERT_EQ(lines.size(), 4u);
    const std::string title = "Debug:  Unexpected Error' - '";
    EXPECT_EQ(lines[0].rfind("TIME : Line 260: System Error: '", 0), 0u) << lines[0];
    EXPECT_TRUE(lines[0].ends_with("' : '" + title + "Can't open debug log file '" + missing +
                                   "\\Brillatrix Pro_00.log''"))
        << lines[0];
    EXPECT_EQ(lines[3], "TIME : Line 265: Debug Message: '" + title +
                            "Can't allocate a debug log file for 'Brillatrix Pro''");
}

} // namespace
