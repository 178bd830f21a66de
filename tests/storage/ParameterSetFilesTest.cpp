#include "storage/ParameterSetFiles.h"

#include "storage/AppFolders.h"
#include "storage/ParameterFiles.h"
#include "tests/storage/SystemCalls.h"
#include "tests/storage/TemporaryFolder.h"
#include "tests/support/RecordingDiag.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <map>

namespace {

constexpr ParameterBlock kIdentity = {{0, 0, 0, 0, 0, 0, 5, 0}};
constexpr char kTitle[] = "Warning - Failed to Read Saved Parameter Set";

uintptr_t SetAccessor(int32_t operation, const ParameterBlock *) {
    return operation == kIdentityBlock ? reinterpret_cast<uintptr_t>(&kIdentity) : 0;
}

std::string SetContent(char mark, size_t size = 255) {
    std::string content(size, mark);
    content.replace(0, std::min<size_t>(8, size), reinterpret_cast<const char *>(kIdentity.bytes),
                    std::min<size_t>(8, size));
    return content;
}

class ParameterSetFiles : public testing::Test {
protected:
    ParameterSetFiles() {
        strcpy(gParametersFolder, folder.Path().c_str());
        gParameterBlockAccessor = SetAccessor;
        TakeReports();
    }
    ~ParameterSetFiles() override {
        gParametersFolder[0] = '\0';
        gParameterBlockAccessor = nullptr;
        FailNextCall("", 0);
    }

    std::wstring Wide(const std::wstring &name) const {
        return std::wstring(folder.Path().begin(), folder.Path().end()) + L"\\" + name;
    }
    static ParameterBlock BlockOf(const std::string &content) {
        ParameterBlock block;
        memcpy(block.bytes, content.data(), sizeof block.bytes);
        return block;
    }
    // Name and mark of every set that the search hands over.
    static std::map<std::wstring, char> ReadAll(bool expected = true) {
        std::map<std::wstring, char> sets;
        const auto Take = [](void *context, const wchar_t *path, ParameterBlock *block) {
            WidePath name;
            NameOfParameterSet(path, &name);
            (*static_cast<std::map<std::wstring, char> *>(context))[name.text] =
                static_cast<char>(block->bytes[20]);
            free(block);
        };
        EXPECT_EQ(ReadAllParameterSets(nullptr, Take, &sets), expected);
        return sets;
    }

    TemporaryFolder folder;
};

using Sets = std::map<std::wstring, char>;

TEST_F(ParameterSetFiles, NamesMayHoldAnyCharacter) {
    const std::wstring names[] = {
        L"Plain",  L"two.points.in",    L"\u00FCml\u00E4ut",    L"\u65E5\u672C \u2605",
        L"\u0101", L"50% & 'more' [x]", std::wstring(120, L'n')};
    Sets expected;
    char mark = 'a';
    for (const std::wstring &name : names) {
        ASSERT_TRUE(SaveParametersFile(BlockOf(SetContent(mark)), Wide(name + L".sss").c_str()));
        expected[name] = mark++;
    }
    ASSERT_TRUE(SaveParametersFile(BlockOf(SetContent('z')), Wide(L"CAPITALS.SSS").c_str()));
    expected[L"CAPITALS"] = 'z';
    EXPECT_EQ(ReadAll(), expected);
    EXPECT_TRUE(TakeReports().empty());
}

TEST_F(ParameterSetFiles, OnlyBadSetFilesAreDeleted) {
    WriteWholeFile(folder / "good.sss", SetContent('g'));
    WriteWholeFile(folder / "short.sss", SetContent('s', 40));
    WriteWholeFile(folder / "empty.sss", "");
    WriteWholeFile(folder / "obsolete.sss", std::string("\1\0\2\0\3\0\4\0", 8) + "rest");
    WriteWholeFile(folder / "other.sssbackup", "not ours");
    WriteWholeFile(folder / "other.sss_", "");
    WriteWholeFile(folder / "notes.txt", "");
    MakeFolder(folder / "folder.sss");
    EXPECT_EQ(ReadAll(), (Sets{{L"good", 'g'}, {L"short", 's'}}));
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"folder.sss", "good.sss", "notes.txt", "other.sss_",
                                                        "other.sssbackup", "short.sss"}));
    std::map<std::string, uint32_t> told;
    for (const RecordedReport &report : TakeReports()) {
        const bool isShown = report.record.kind == kUserMessage;
        EXPECT_TRUE(!isShown || (report.title == kTitle && report.messageBoxFlags == kWarningIcon));
        ++told[report.message];
    }
    const std::map<std::string, uint32_t> expected = {
        {"ReadSavedParameterSet() failed with FilePath = 'folder.sss'", 1},
        {"User Setting File version mismatch. File Version = '1','2','3','4'", 1},
        {"fread() failed with errno = '0'", 1},
        {"Your Parameter Set file '" + (folder / "empty.sss") + "' is invalid and is being deleted.\r\n", 1},
        {"Your Parameter Set file '" + (folder / "obsolete.sss") +
             "' was saved in an obsolete format and is being deleted.\r\n\r\nFile Version: Major Version = "
             "'1', Minor "
             "Version = '2', Revision = '3', Build = '4'",
         1}};
    EXPECT_EQ(told, expected);
}

TEST_F(ParameterSetFiles, FilesThatCannotBeReadOrDeletedAreToldAndStay) {
    WriteWholeFile(folder / "held.sss", SetContent('h'));
    WriteWholeFile(folder / "old.sss", std::string(255, '\7'));
    SetFileAttributesA((folder / "old.sss").c_str(), FILE_ATTRIBUTE_READONLY);
    WriteWholeFile(folder / "readonly.sss", SetContent('r'));
    SetFileAttributesA((folder / "readonly.sss").c_str(), FILE_ATTRIBUTE_READONLY);
    {
        const ExclusiveOpening held(folder / "held.sss");
        EXPECT_EQ(ReadAll(), (Sets{{L"readonly", 'r'}}));
    }
    bool heldTold = false, removeTold = false;
    for (const RecordedReport &report : TakeReports()) {
        heldTold |= report.record.kind == kUserMessage && report.record.line == 237 &&
                    report.message == "Your Parameter Set file '" + (folder / "held.sss") +
                                          "' could not be read and stays as it is.";
        removeTold |= report.message == "_tremove() failed with error = '13'. File to be deleted was '" +
                                            (folder / "old.sss") + "'";
    }
    EXPECT_TRUE(heldTold && removeTold);
    EXPECT_EQ(ReadWholeFile(folder / "held.sss"), SetContent('h'));
    EXPECT_EQ(ReadWholeFile(folder / "old.sss"), std::string(255, '\7'));
    EXPECT_FALSE(DeleteSavedParameterSet(Wide(L"readonly.sss").c_str()));
    EXPECT_TRUE(Exists(folder / "readonly.sss"));
    TakeReports();
    EXPECT_FALSE(DeleteSavedParameterSet(Wide(L"missing.sss").c_str()));
    EXPECT_EQ(TakeReports().at(0).message, "_tremove() failed with error = '2'. File to be deleted was '" +
                                               (folder / "missing.sss") + "'");
}

TEST_F(ParameterSetFiles, WithoutAFolderNothingIsSearched) {
    EXPECT_TRUE(ReadAll().empty());
    EXPECT_TRUE(TakeReports().empty()) << "an empty folder is no failure";
    gParametersFolder[0] = '\0';
    EXPECT_TRUE(ReadAll(false).empty());
    EXPECT_EQ(TakeReports().at(0).message, "_tcscpy_s() failed with Parameters Directory = ''");
}

TEST(WidePaths, NamesAndFolders) {
    WidePath name;
    for (const auto &[path, expected] : {std::pair(L"C:\\a.b\\set.one.sss", L"set.one"),
                                         {L"C:/a/x.sss", L"x"},
                                         {L"C:x.sss", L"x"},
                                         {L"none", L"none"},
                                         {L"C:\\a.b\\", L""}}) {
        NameOfParameterSet(path, &name);
        EXPECT_STREQ(name.text, expected);
    }
    NameOfParameterSet(std::wstring(kMaxPath, L'x').c_str(), &name);
    EXPECT_EQ(wcslen(name.text), kMaxPath - 1);
    const TemporaryFolder folder;
    MakeFolder(folder / "Parameters long name");
    MakeFolder(folder / "Parameters long name\\sub");
    const std::wstring root(folder.Path().begin(), folder.Path().end());
    const std::wstring sets = root + L"\\Parameters long name";
    EXPECT_TRUE(IsInFolder((sets + L"\\x.sss").c_str(), sets.c_str()));
    EXPECT_TRUE(IsInFolder((root + L"/PARAMETERS LONG NAME/x.sss").c_str(), (sets + L"\\").c_str()));
    EXPECT_TRUE(IsInFolder((sets + L"\\sub\\..\\x.sss").c_str(), sets.c_str()));
    EXPECT_FALSE(IsInFolder((sets + L"\\sub\\x.sss").c_str(), sets.c_str()));
    EXPECT_FALSE(IsInFolder((sets + L"2\\x.sss").c_str(), sets.c_str()));
    EXPECT_FALSE(IsInFolder((root + L"\\x.sss").c_str(), sets.c_str()));
    WidePath shortSets;
    ASSERT_GT(GetShortPathNameW(sets.c_str(), shortSets.text, kMaxPath), 0u);
    EXPECT_TRUE(IsInFolder((sets + L"\\x.sss").c_str(), shortSets.text));
}

TEST(WidePaths, WhatDoesNotFitChangesNothing) {
    const std::string root(kMaxPath, 'a');
    RememberWideRoot(root.c_str(), L"b");
    EXPECT_FALSE(IsBelowWideRoot(root.c_str()));
    RememberWideRoot("a", std::wstring(kMaxPath, L'b').c_str());
    EXPECT_FALSE(IsBelowWideRoot("a"));
    WidePath unchanged = {L"kept"};
    EXPECT_FALSE(WidenPath(std::string(kMaxPath, 'x').c_str(), &unchanged));
    EXPECT_FALSE(JoinPath(std::wstring(500, L'x').c_str(), std::wstring(499, L'x').c_str(), &unchanged));
    EXPECT_FALSE(
        JoinPath(std::wstring(500, L'x').c_str(), std::wstring(498, L'x').c_str(), L"s", &unchanged));
    EXPECT_STREQ(unchanged.text, L"kept");
    EXPECT_STREQ(DescribePath(std::wstring(kMaxPath, L'x').c_str()).text, "");
    const std::wstring longName(300, L'x');
    EXPECT_EQ(SystemPath((L"C:\\a\\..\\" + longName).c_str()).text, L"\\\\?\\C:\\" + longName);
    EXPECT_EQ(SystemPath((L"\\\\server\\share\\" + longName).c_str()).text,
              L"\\\\?\\UNC\\server\\share\\" + longName);
    EXPECT_STREQ(SystemPath(L"short").text, L"short");
}

} // namespace
