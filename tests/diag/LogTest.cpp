#include "diag/Log.h"

#include "diag/ErrorReport.h"
#include "diag/LogState.h"
#include "tests/diag/LogFixture.h"

#include <algorithm>
#include <ctime>
#include <map>
#include <regex>
#include <thread>

namespace {

using Log = LogFixture;

std::string LongTime(time_t when) {
    char text[100];
    strftime(text, sizeof text, "on %A, %B %d, %Y at %H:%M:%S", localtime(&when));
    return text;
}

// The text with every time between two moments replaced.
std::string HideTimes(std::string text, time_t from, time_t to) {
    for (time_t when = from; when <= to; ++when)
        text = std::regex_replace(text, std::regex(LongTime(when)), "NOW");
    return text;
}

TEST_F(Log, IsUtf16WithHeaderAndClosingLine) {
    const time_t from = time(nullptr);
    Open();
    EXPECT_EQ(gLogState.path, LogPath());
    WriteLogLine("plain %u\n", 5u);
    WriteLogLine("no line end");
    CloseLog();
    const std::string text = HideTimes(ReadLogText(LogPath()), from, time(nullptr));
    EXPECT_EQ(text, "Brillatrix Pro version 7.65535.3.21 (64 bit Release) Log opened NOW.\n\n"
                    "plain 5\nno line end\nBrillatrix Pro Log closed NOW.\n");
}

TEST_F(Log, ConvertsFromTheSystemsCodePage) {
    Open();
    const size_t before = ReadWholeFile(LogPath()).size();
    WriteLogLine("\xE9\x80\n");
    const std::string line = ReadWholeFile(LogPath()).substr(before);
    if (GetACP() != 1252)
        GTEST_SKIP() << "code page " << GetACP();
    EXPECT_EQ(line, std::string("\xE9\x00\xAC\x20\x0A\x00", 6));
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
        WriteLogLine("lost\n");
        EXPECT_EQ(ReadWholeFile(LogPath()), closed);
    }
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"Brillatrix Pro_00.log", "missing"}));
    EXPECT_FALSE(Exists(missing + "\\Brillatrix Pro_00.log"));
    ReportError({1, kUserMessage, 0}, kStopIcon, "t", "still shown");
    EXPECT_EQ(TakeBoxes().size(), 1u);
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
    EXPECT_EQ(lines[0].rfind("TIME : Line 260: System Error: '", 0), 0u) << lines[0];
    EXPECT_NE(lines[0].find("' : 'Debug:  Unexpected Error' - 'Can't open debug log file '" + missing +
                            "\\Brillatrix Pro_00.log''"),
              std::string::npos)
        << lines[0];
    EXPECT_EQ(lines[1].rfind("TIME : Line 694: ", 0), 0u);
    EXPECT_EQ(lines[2].rfind("TIME : Line 782: ", 0), 0u);
    EXPECT_EQ(lines[3],
              "TIME : Line 265: Debug Message: 'Debug:  Unexpected Error' - 'Can't allocate a debug log "
              "file for 'Brillatrix Pro''");
}

// Another host that starts meanwhile moves the log of this run away; it must neither fail nor lose lines.
TEST_F(Log, CanBeReadMovedAndDeletedWhileOpen) {
    Open();
    EXPECT_TRUE(MoveFileA(LogPath().c_str(), (folder / "moved").c_str()));
    WriteLogLine("after the move\n");
    EXPECT_NE(ReadLogText(folder / "moved").find("after the move\n"), std::string::npos);
    EXPECT_TRUE(DeleteFileA((folder / "moved").c_str()));
}

TEST_F(Log, TheTraceSetupPathLiesInTheProductCommonFolder) {
    gProductCommonFolderPath = "C:\\Data\\Brillatrix Pro";
    Open();
    EXPECT_STREQ(gLogState.traceSetupPath, "C:\\Data\\Brillatrix Pro\\TraceSetup.trc");
    const std::string tooLong(990, 'x');
    ForgetLog();
    gProductCommonFolderPath = tooLong.c_str();
    Open();
    EXPECT_STREQ(gLogState.traceSetupPath, "");
}

} // namespace
