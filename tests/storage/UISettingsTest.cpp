#include "storage/UISettings.h"

#include "storage/AppFolders.h"
#include "tests/storage/SystemCalls.h"
#include "tests/storage/TemporaryFolder.h"
#include "tests/support/RecordingDiag.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

// A file's fields in their order, little-endian.
std::string File(const uint16_t (&version)[4], const int32_t (&fields)[11]) {
    return std::string(reinterpret_cast<const char *>(version), 8) +
           std::string(reinterpret_cast<const char *>(fields), 44);
}

constexpr uint16_t kCurrent[4] = {0, 0, 0, 11};
constexpr int32_t kFields[11] = {-20, 10, 800, 700, 3, 0, 5, 6, 7, 8, 1};

bool SameRect(const ScreenRect &a, const ScreenRect &b) {
    return memcmp(&a, &b, sizeof a) == 0;
}

class UISettingsFile : public testing::Test {
protected:
    UISettingsFile() : path(folder / "UISettings.bin") {
        strcpy(gSettingsFolder, folder.Path().c_str());
        SetFields(kDefaultUISettings);
        TakeReports();
    }
    ~UISettingsFile() override {
        gSettingsFolder[0] = '\0';
        FailNextCall("", 0);
    }

    static void SetFields(const UISettings &s) {
        SetDialogRect(s.dialogRect);
        SetViewTool(s.viewTool);
        SetPreviewFlag(s.previewFlag);
        SetDebugViewerRect(s.debugViewerRect);
        SetDebugDisplayChoice(s.debugDisplayChoice);
    }
    // The settings-loaded flag is the process's and never goes back, so that the record tells.
    static bool LoadsAnything() {
        const bool loadedBefore = AreUISettingsLoaded();
        EXPECT_EQ(LoadUISettings(), loadedBefore);
        return !HasDefaults();
    }
    static bool HasDefaults() {
        return SameRect(GetDialogRect(), {0, 0, 0, 0}) && GetViewTool() == 2 && GetPreviewFlag() == 1 &&
               SameRect(GetDebugViewerRect(), {0, 0, 0, 0}) && GetDebugDisplayChoice() == 0;
    }

    TemporaryFolder folder;
    std::string path;
};

// A missing file is no failure; anything else is told once and stays where it is.
TEST_F(UISettingsFile, FilesThatAreNotOursChangeNothing) {
    EXPECT_FALSE(LoadsAnything());
    EXPECT_TRUE(TakeReports().empty());
    const std::string good = File(kCurrent, kFields);
    std::vector<std::string> files;
    for (const size_t size : {0, 1, 8, 51})
        files.push_back(good.substr(0, size));
    const uint16_t versions[][4] = {{0, 0, 0, 10}, {0, 0, 0, 12}, {1, 0, 0, 11},    {0, 1, 0, 11},
                                    {0, 0, 1, 11}, {11, 0, 0, 0}, {0, 2, 65535, 10}};
    for (const auto &version : versions)
        files.push_back(File(version, kFields));
    std::vector<RecordedReport> reports;
    for (const std::string &file : files) {
        WriteWholeFile(path, file);
        EXPECT_FALSE(LoadsAnything()) << file.size();
        reports = TakeReports();
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(ReadWholeFile(path), file);
    }
    EXPECT_EQ(reports[0].record.line, 1128u);
    EXPECT_EQ(reports[0].record.kind, kDebugMessage);
    EXPECT_EQ(reports[0].title, "Debug:  Unexpected Error");
    EXPECT_EQ(reports[0].message, "User Setting File version mismatch. File Version = '0','2','65535','10'");
}

TEST_F(UISettingsFile, FilesThatCannotBeReadOrWrittenAreReported) {
    WriteWholeFile(path, File(kCurrent, kFields));
    {
        const ExclusiveOpening held(path);
        EXPECT_FALSE(LoadsAnything());
    }
    EXPECT_EQ(TakeReports().size(), 1u);
    FailNextCall("WriteFile:short", 0);
    EXPECT_FALSE(SaveUISettings());
    EXPECT_TRUE(FailureHappened());
    EXPECT_FALSE(TakeReports().empty());
    EXPECT_EQ(ReadWholeFile(path), File(kCurrent, kFields));
    gSettingsFolder[0] = '\0';
    EXPECT_FALSE(LoadsAnything());
    EXPECT_FALSE(SaveUISettings());
    EXPECT_EQ(TakeReports().size(), 2u);
}

TEST_F(UISettingsFile, EveryFieldIsReadAndWritten) {
    WriteWholeFile(path, File(kCurrent, kFields) + "what follows is not ours");
    EXPECT_TRUE(LoadUISettings());
    EXPECT_TRUE(AreUISettingsLoaded());
    EXPECT_TRUE(SameRect(GetDialogRect(), {-20, 10, 800, 700}));
    EXPECT_EQ(GetViewTool(), 3u);
    EXPECT_EQ(GetPreviewFlag(), 0u);
    EXPECT_TRUE(SameRect(GetDebugViewerRect(), {5, 6, 7, 8}));
    EXPECT_EQ(GetDebugDisplayChoice(), 1u);

    SetDialogRect({1, 2, 3, 4});
    SetViewTool(4);
    SetPreviewFlag(1);
    SetDebugViewerRect({-9, -8, -7, -6});
    SetDebugDisplayChoice(2);
    EXPECT_TRUE(SaveUISettings());
    EXPECT_EQ(ReadWholeFile(path), File(kCurrent, {1, 2, 3, 4, 4, 1, -9, -8, -7, -6, 2}));
    EXPECT_TRUE(TakeReports().empty());
}

} // namespace
