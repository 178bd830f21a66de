#include "diag/ErrorReport.h"

#include "diag/Log.h"
#include "diag/LogLines.h"
#include "tests/diag/LogFixture.h"

#include <thread>
#include <utility>

namespace {

using ErrorReport = LogFixture;
using testing::Test;

TEST_F(ErrorReport, EachKindHasItsLineAndOnlyUserMessagesAreShown) {
    Open();
    ReportError({139, kDebugMessage, 0}, kStopIcon, kTitleUnexpected, "debug %d", 1);
    ReportError({4294967295u, kOtherDebugMessage, 5}, kStopIcon, kTitleUnexpected, "%s", "other 100%");
    ReportError({185, kUserMessage, 0}, kWarningIcon, "Invalid Script Specified", "user '%s'", "text");
    ReportError({7, 4, 0}, kStopIcon, "none", "not logged");
    ReportError({7, 0xFFFFFFFF, 0}, kStopIcon, "none", "not logged");
    EXPECT_EQ(LinesSoFar(),
              (std::vector<std::string>{
                  "TIME : Line 139: Debug Message: 'Debug:  Unexpected Error' - 'debug 1'",
                  "TIME : Line 4294967295: Debug Message: 'Debug:  Unexpected Error' - 'other 100%'",
                  "TIME : Line 185: User Message: 'Invalid Script Specified' - 'user 'text''",
              }));
    const std::vector<ShownBox> boxes = TakeBoxes();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].owner, GetDesktopWindow());
    EXPECT_EQ(boxes[0].title, "Invalid Script Specified");
    EXPECT_EQ(boxes[0].text, "user 'text'");
    EXPECT_EQ(boxes[0].flags, 48u | 0x10000u);
    std::thread([] { ReportError({9, kUserMessage, 0}, kStopIcon, "t", "worker"); }).join();
    EXPECT_TRUE(TakeBoxes().empty()) << "of another thread: logged but not shown";
    EXPECT_EQ(LinesSoFar().back(), "TIME : Line 9: User Message: 't' - 'worker'");
}

// An invalid ordinal has a text with an insert, for which there is no argument; 0xDEADBEEF has no text.
TEST_F(ErrorReport, SystemErrorsCarryOneLineOfTheSystemsText) {
    Open();
    ReportError({1, kSystemError, ERROR_FILE_NOT_FOUND}, kStopIcon, "t", "first");
    ReportError({2, kSystemError, ERROR_INVALID_ORDINAL}, kStopIcon, "t", "second");
    ReportError({3, kSystemError, 0xDEADBEEF}, kStopIcon, "t", "third");
    const std::vector<std::string> lines = LinesSoFar();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0].rfind("TIME : Line 1: System Error: '", 0), 0u) << lines[0];
    EXPECT_NE(lines[0].find("' : 't' - 'first'"), std::string::npos) << lines[0];
    EXPECT_EQ(lines[0].find('\r'), std::string::npos) << lines[0];
    EXPECT_EQ(lines[0].find("Unidentified"), std::string::npos) << lines[0];
    EXPECT_NE(lines[1].find("%1"), std::string::npos) << lines[1];
    EXPECT_EQ(lines[2], "TIME : Line 3: System Error: 'Unidentified System Error' : 't' - 'third'");
    EXPECT_TRUE(TakeBoxes().empty());
}

TEST_F(ErrorReport, TheOwnerIsWhoOpenedTheLogAndAMissingWindowStillShowsABox) {
    ReportError({1, kUserMessage, 0}, kStopIcon, "t", "nobody opened the log");
    EXPECT_TRUE(TakeBoxes().empty());
    gLogFolderPath = "";
    OpenLog(reinterpret_cast<HWND>(0x7654320), GetCurrentThreadId());
    ReportError({2, kUserMessage, 0}, kStopIcon, "t", "no log, no window");
    EXPECT_EQ(SetReportOwnerWindow(GetDesktopWindow()), reinterpret_cast<HWND>(0x7654320));
    ReportError({3, kUserMessage, 0}, kStopIcon, "t", "no log");
    const std::vector<ShownBox> boxes = TakeBoxes();
    ASSERT_EQ(boxes.size(), 2u);
    EXPECT_EQ(boxes[0].owner, nullptr);
    EXPECT_EQ(boxes[1].owner, GetDesktopWindow());
}

TEST_F(ErrorReport, LongMessagesAreWholeAndCutOnlyWithoutMemory) {
    Open();
    const std::string start = "TIME : Line 1: User Message: 't' - '";
    // What the line and the box say when no more than that can be allocated at once.
    const auto report = [&](const std::string &text, size_t mallocLimit) {
        FailMallocFrom(mallocLimit);
        ReportError({1, kUserMessage, 0}, kStopIcon, "t", "%s", text.c_str());
        WriteLogLine("next\n");
        FailMallocFrom(SIZE_MAX);
        const std::vector<std::string> lines = LinesSoFar();
        EXPECT_EQ(lines.back(), "next");
        return std::pair{lines.at(lines.size() - 2), TakeBoxes().at(0).text};
    };
    for (size_t length = 460; length < 520; ++length) {
        const std::string text(length, 'x');
        EXPECT_EQ(report(text, SIZE_MAX), (std::pair{start + text + "'", text}));
    }
    const std::string text = std::string(100000, 'x') + "end";
    const int blocks = LiveBlocks();
    EXPECT_EQ(report(text, SIZE_MAX), (std::pair{start + text + "'", text}));
    EXPECT_EQ(LiveBlocks(), blocks);
    for (const size_t limit : {size_t{1000}, size_t{100020}, size_t{150000}}) {
        const auto [line, box] = report(text, limit);
        EXPECT_GT(line.size(), 400u);
        EXPECT_EQ(line.rfind(start + "xxx", 0), 0u) << line;
        EXPECT_EQ(text.rfind(box, 0), 0u) << limit;
        EXPECT_EQ(box == text, limit > 1000);
    }
}

TEST_F(ErrorReport, TheLastErrorSurvivesAReport) {
    Open();
    for (const uint32_t kind : {kDebugMessage, kUserMessage, kSystemError, 9u}) {
        SetLastError(1234);
        ReportError({1, kind, 0xDEADBEEF}, kStopIcon, "t", "text");
        EXPECT_EQ(GetLastError(), 1234u);
    }
}

} // namespace
