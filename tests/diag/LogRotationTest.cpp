#include "diag/LogRotation.h"

#include "diag/Log.h"
#include "tests/diag/LogFixture.h"

#include <map>

namespace {

// Rotates in a folder beside that of the open log, so that the reports can be read there.
class LogRotation : public LogFixture {
protected:
    LogRotation() { Open(); }

    // The path of the new log, relative to the folder; "<failed>" when there is none.
    std::string Rotate() {
        char path[1000] = "unchanged";
        if (!RotateLogs(logs.Path().c_str(), "Brillatrix Pro", path, sizeof path))
            return "<failed>";
        return std::string(path).substr(logs.Path().size() + 1);
    }

    // Each file holds its own name.
    void Make(const std::vector<std::string> &names) {
        for (const std::string &name : names)
            WriteWholeFile(logs / name, name);
    }

    std::map<std::string, std::string> Contents() const {
        std::map<std::string, std::string> contents;
        for (const std::string &name : logs.Names())
            contents[name] = ReadWholeFile(logs / name);
        return contents;
    }

    TemporaryFolder logs;
};

std::string Log(unsigned number) {
    return "Brillatrix Pro_0" + std::to_string(number) + ".log";
}

using Files = std::map<std::string, std::string>;

TEST_F(LogRotation, MovesNineLogsUpAndDeletesTheTenth) {
    for (const unsigned last : {8u, 9u}) {
        Files expected;
        for (unsigned i = 0; i <= last; ++i)
            Make({Log(i)});
        for (unsigned i = 0; i <= 8; ++i)
            expected[Log(i + 1)] = Log(i);
        EXPECT_EQ(Rotate(), Log(0));
        EXPECT_EQ(Contents(), expected);
    }
    EXPECT_TRUE(LinesSoFar().empty());
}

TEST_F(LogRotation, TouchesOnlyItsOwnNamesAndDeletesThoseWithoutANumber) {
    const std::vector<std::string> others = {
        "Brillatrix Pro_.log", "Brillatrix Pro_003.log", "Brillatrix Pro_04.log1", "Brillatrix Pro_04.txt",
        "Other_02.log",        "xBrillatrix Pro_02.log", "Brillatrix Pro-02.log",  "Brillatrix Pro.log"};
    Make(others);
    Make({"Brillatrix Pro_ab.log", "Brillatrix Pro_1a.log", "Brillatrix Pro_+1.log", "Brillatrix Pro_ 1.log",
          "Brillatrix Pro_-1.log", "Brillatrix Pro__1.log", "Brillatrix Pro___.log", "Brillatrix Pro_10.log",
          "Brillatrix Pro_99.log", "Brillatrix Pro_0x.log", "Brillatrix Pro_4..log", "BRILLATRIX PRO_02.LOG",
          "Brillatrix Pro_6.log", "Brillatrix Pro_9.log", "Brillatrix Pro_a.log", Log(5)});
    const std::wstring root(logs.Path().begin(), logs.Path().end());
    CloseHandle(CreateFileW((root + L"\\Brillatrix Pro_\u65E5\u672C.log").c_str(), GENERIC_WRITE, 0, nullptr,
                            CREATE_NEW, 0, nullptr));
    Files expected;
    for (const std::string &name : others)
        expected[name] = name;
    expected[Log(3)] = "BRILLATRIX PRO_02.LOG";
    expected[Log(6)] = Log(5);
    expected[Log(7)] = "Brillatrix Pro_6.log";
    EXPECT_EQ(Rotate(), Log(0));
    EXPECT_EQ(Contents(), expected);
    EXPECT_TRUE(LinesSoFar().empty());
}

// The rest of the search still deletes, but nothing moves, and the new log takes the place of the last one.
TEST_F(LogRotation, AFileThatCannotBeDeletedEndsTheMoving) {
    Make({Log(0), Log(1), "Brillatrix Pro_aa.log", "Brillatrix Pro_zz.log"});
    MakeFolder(logs / Log(9));
    WriteWholeFile(logs / Log(9) + "\\inside", "kept");
    {
        const ExclusiveOpening open(logs / "Brillatrix Pro_aa.log");
        EXPECT_EQ(Rotate(), Log(0));
    }
    EXPECT_EQ(logs.Names(), (std::vector<std::string>{Log(0), Log(1), Log(9), "Brillatrix Pro_aa.log"}));
    EXPECT_EQ(ReadWholeFile(logs / Log(9) + "\\inside"), "kept");
    std::vector<std::string> lines = LinesSoFar();
    std::sort(lines.begin(), lines.end());
    std::vector<std::string> expected;
    for (const std::string &name : {Log(9), std::string("Brillatrix Pro_aa.log")})
        expected.push_back(
            "TIME : Line 722: Debug Message: 'Debug:  Unexpected Error' - '_tremove() failed with "
            "error = '13'. File to be deleted was '" +
            (logs / name) + "''");
    EXPECT_EQ(lines, expected);
}

TEST_F(LogRotation, AFileThatCannotBeMovedEndsTheMoving) {
    Make({Log(1), Log(2), Log(3), Log(4)});
    {
        const ExclusiveOpening open(logs / Log(2));
        EXPECT_EQ(Rotate(), Log(0));
    }
    EXPECT_EQ(Contents(), (Files{{Log(1), Log(1)}, {Log(2), Log(2)}, {Log(4), Log(3)}, {Log(5), Log(4)}}));
    const std::vector<std::string> lines = LinesSoFar();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].rfind("TIME : Line 755: ", 0), 0u) << lines[0];
}

TEST_F(LogRotation, NoFolderMeansNoPath) {
    const std::string tooLong(1000, 'x');
    const std::string almostTooLong(980, 'x');
    char path[1000] = "unchanged";
    for (const char *unusable : {static_cast<const char *>(nullptr), "", tooLong.c_str()})
        EXPECT_FALSE(RotateLogs(unusable, "Brillatrix Pro", path, sizeof path));
    EXPECT_FALSE(RotateLogs(almostTooLong.c_str(), "Brillatrix Pro", path, sizeof path));
    EXPECT_FALSE(RotateLogs(logs.Path().c_str(), "Brillatrix Pro", path, 12));
    EXPECT_STREQ(path, "unchanged");
    const std::vector<std::string> lines = LinesSoFar();
    ASSERT_EQ(lines.size(), 9u);
    const std::string title = "Debug Message: 'Debug:  Unexpected Error' - '";
    EXPECT_EQ(lines[4], "TIME : Line 694: " + title + "_tcscpy_s() failed with Debug Log directory = '" +
                            tooLong + "''");
    EXPECT_EQ(lines[5], "TIME : Line 782: " + title + "GetDebugLogFolder() failed.'");
}

} // namespace
