#include "storage/AtomicFile.h"

#include "tests/storage/SystemCalls.h"
#include "tests/storage/TemporaryFolder.h"
#include "tests/support/RecordingDiag.h"

#include <gtest/gtest.h>
#include <memory>
#include <thread>

namespace {

using Strings = std::vector<std::string>;

class AtomicFile : public testing::Test {
protected:
    AtomicFile() { TakeReports(); }
    ~AtomicFile() override { FailNextCall("", 0); }

    bool Write(const std::string &path, const std::string &content) {
        return WriteFileAtomically(path.c_str(), content.data(), content.size());
    }

    // One failure was reported, with a system error.
    void ExpectReport(const std::string &message, uint32_t error) {
        const std::vector<RecordedReport> reports = TakeReports();
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].record.kind, kSystemError);
        EXPECT_EQ(reports[0].message, message);
        EXPECT_TRUE(error ? reports[0].record.systemError == error : reports[0].record.systemError != 0);
    }

    TemporaryFolder folder;
};

TEST_F(AtomicFile, AFailureAtAnyStepKeepsTheOldFile) {
    const std::string path = folder / "a.sss";
    WriteWholeFile(path, "old");
    for (const std::string call :
         {"CreateFile", "WriteFile", "FlushFileBuffers", "CloseHandle", "MoveFileEx"}) {
        FailNextCall(call, ERROR_CRC);
        EXPECT_FALSE(Write(path, "new")) << call;
        EXPECT_TRUE(FailureHappened()) << call;
        ExpectReport(call + "() failed with FilePath = '" + path + "'", ERROR_CRC);
        EXPECT_EQ(ReadWholeFile(path), "old") << call;
        EXPECT_EQ(folder.Names(), Strings{"a.sss"}) << call;
    }
    FailNextCall("WriteFile:short", 0);
    EXPECT_FALSE(Write(path, "new"));
    ExpectReport("WriteFile() failed with FilePath = '" + path + "'", ERROR_DISK_FULL);
    EXPECT_EQ(ReadWholeFile(path), "old");
    EXPECT_EQ(folder.Names(), Strings{"a.sss"});
}

TEST_F(AtomicFile, ATargetThatCannotBeReplacedStaysAndOneThatCannotBeIsReported) {
    const std::string path = folder / "a.sss";
    WriteWholeFile(path, "old");
    {
        const ExclusiveOpening open(path);
        EXPECT_FALSE(Write(path, "new"));
    }
    ExpectReport("MoveFileEx() failed with FilePath = '" + path + "'", 0);
    EXPECT_EQ(ReadWholeFile(path), "old");

    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(Write(path, "new"));
    ExpectReport("WriteFileAtomically() failed with read-only FilePath = '" + path + "'",
                 ERROR_ACCESS_DENIED);
    EXPECT_EQ(ReadWholeFile(path), "old");
    EXPECT_EQ(folder.Names(), Strings{"a.sss"});

    MakeFolder(folder / "b.sss");
    WriteWholeFile(folder / "b.sss\\inside", "kept");
    EXPECT_FALSE(Write(folder / "b.sss", "new"));
    EXPECT_EQ(ReadWholeFile(folder / "b.sss\\inside"), "kept");
    EXPECT_EQ(folder.Names(), (Strings{"a.sss", "b.sss"}));
}

// A virus scanner, a backup, another host that reads just then.
TEST_F(AtomicFile, AReaderIsWaitedForHalfASecond) {
    const std::string path = folder / "a.sss";
    for (const auto &[held, written] : {std::pair(200, true), {900, false}}) {
        WriteWholeFile(path, "old");
        auto reader = std::make_unique<ExclusiveOpening>(path);
        std::thread closing([&reader, &held = held] {
            Sleep(static_cast<DWORD>(held));
            reader.reset();
        });
        const ULONGLONG begun = GetTickCount64();
        EXPECT_EQ(Write(path, "new"), written);
        EXPECT_LT(GetTickCount64() - begun, 850u);
        closing.join();
        EXPECT_EQ(ReadWholeFile(path), written ? "new" : "old");
        EXPECT_EQ(TakeReports().size(), written ? 0u : 1u);
    }
    EXPECT_EQ(folder.Names(), Strings{"a.sss"});
}

// The lengths at which a name of the system's making no longer fits its 260 characters, and beyond.
TEST_F(AtomicFile, FoldersOfAnyLengthCanBeWrittenInto) {
    const std::wstring root(folder.Path().begin(), folder.Path().end());
    for (const size_t length : {246, 247, 253, 259, 260, 400}) {
        std::wstring place = root;
        while (place.size() + 1 < length) {
            place += L"\\" + std::wstring(std::min<size_t>(length - place.size() - 1, 100), L'd');
            CreateDirectoryW((L"\\\\?\\" + place).c_str(), nullptr);
        }
        const std::wstring path = place + L"\\a.sss";
        for (const char *content : {"one", "two"})
            EXPECT_TRUE(WriteFileAtomically(path.c_str(), content, 3)) << length;
        const HANDLE file = CreateFileW((L"\\\\?\\" + path).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                        OPEN_EXISTING, 0, nullptr);
        char read[4] = "";
        DWORD got = 0;
        EXPECT_TRUE(ReadFile(file, read, 3, &got, nullptr)) << length;
        EXPECT_STREQ(read, "two") << length;
        CloseHandle(file);
    }
    EXPECT_TRUE(TakeReports().empty());
}

} // namespace
