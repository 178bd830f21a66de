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

// A missing file is no failure.
TEST_F(UISettingsFile, AMissingFileIsSilentAndOneOfAnotherVersionIsTold) {
    EXPECT_FALSE(LoadsAnything());
    WriteWholeFile(path, File({0, 2, 65535, 10}, kFields));
    EXPECT_FALSE(LoadsAnything());
    EXPECT_EQ(TakeReportLines(),
              std::vector<std::string>{"1128 0 16 Debug:  Unexpected Error: User Setting File version "
                                       "mismatch. File Version = '0','2','65535','10'"});
}

TEST_F(UISettingsFile, FilesThatCannotBeWrittenAndFoldersThatAreNoneAreReported) {
    WriteWholeFile(path, File(kCurrent, kFields));
    EXPECT_TRUE(LoadUISettings() && !HasDefaults());
    SetFields(kDefaultUISettings);
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

} // namespace
