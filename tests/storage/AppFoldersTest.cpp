#include "storage/AppFolders.h"

#include "diag/Log.h"
#include "storage/UISettings.h"
#include "tests/storage/SystemCalls.h"
#include "tests/storage/TemporaryFolder.h"
#include "tests/support/RecordingDiag.h"

#include <cstring>
#include <gtest/gtest.h>
#include <shlobj.h>

namespace {

class AppFolders : public testing::Test {
protected:
    AppFolders() {
        TakeReports();
        TakeShellFolderCalls();
        for (char *path :
             {gSettingsFolder, gParametersFolder, gLogFolder, gCommonDataFolder, gProductCommonFolder})
            memset(path, 0, kMaxPath);
        gShellFolders = {folder / "Local", folder / "Common", E_FAIL, -1};
        MakeFolder(gShellFolders.localData);
        MakeFolder(gShellFolders.commonData);
    }
    ~AppFolders() override { gShellFolders = {"", "", E_FAIL, -1}; }

    TemporaryFolder folder;
};

// The messages of the reports made, each of them checked to be one for the log only.
std::vector<std::string> Messages() {
    std::vector<std::string> messages;
    for (const RecordedReport &report : TakeReports()) {
        EXPECT_EQ(report.record.kind, kDebugMessage);
        EXPECT_EQ(report.messageBoxFlags, kStopIcon);
        EXPECT_EQ(report.title, "Debug:  Unexpected Error");
        messages.push_back(report.message);
    }
    return messages;
}

using Strings = std::vector<std::string>;

// Installed sets are copied where the user has no folder for sets yet, and never again.
TEST_F(AppFolders, AreSetAndTheUsersOwnAreMade) {
    constexpr const char *files[] = {"\\One.sss", "\\Two.sss", "\\Two.txt"};
    MakeFolder(folder / "presets");
    for (const char *name : files)
        WriteWholeFile((folder / "presets") + name, name);
    RegSetKeyValueA(HKEY_CURRENT_USER, "Software\\Nexorvanta\\Brillatrix", "InstallFolder", REG_SZ,
                    folder.Path().c_str(), static_cast<DWORD>(folder.Path().size() + 1));
    for (int run = 0; run < 2; ++run) {
        EXPECT_TRUE(InitAppFolders("Brillatrix", "Brillatrix Pro"));
        EXPECT_EQ(gSettingsFolder, folder / "Local\\Nexorvanta\\Brillatrix\\Settings");
        EXPECT_EQ(gParametersFolder, folder / "Local\\Nexorvanta\\Brillatrix\\Parameters");
        EXPECT_EQ(gLogFolder, folder / "Local\\Nexorvanta\\Brillatrix\\Logs");
        EXPECT_EQ(gCommonDataFolder, folder / "Common\\NexorvantaSoftware");
        EXPECT_EQ(gProductCommonFolder, folder / "Common\\NexorvantaSoftware\\Brillatrix Pro");
        EXPECT_STREQ(gLogFolderPath, gLogFolder);
        EXPECT_STREQ(gProductCommonFolderPath, gProductCommonFolder);
        EXPECT_TRUE(Exists(gSettingsFolder) && Exists(gParametersFolder) && Exists(gLogFolder));
        EXPECT_FALSE(Exists(gCommonDataFolder));
        EXPECT_EQ(Messages(), Strings{});
        EXPECT_EQ(TakeShellFolderCalls(), (std::vector<int>{0x801C, 0x801C, 0x801C, 0x8023}));
        int copied = 0;
        for (const char *name : files)
            copied += DeleteFileA((std::string(gParametersFolder) + name).c_str());
        EXPECT_EQ(copied, run == 0 ? 2 : 0);
    }
    RegDeleteTreeA(HKEY_CURRENT_USER, "Software\\Nexorvanta");
}

TEST_F(AppFolders, AFolderThatTheShellRefusesStaysEmptyAndTheOthersAreSet) {
    const std::string refused =
        "SHGetFolderPath failed with GetFolderResult = '80004005' and  Last Error = '5'";
    gShellFolders.localData.clear();
    EXPECT_FALSE(InitAppFolders("Brillatrix", "Brillatrix Pro"));
    EXPECT_EQ(Messages(), (Strings{refused, "GetUserDataFolder() failed.", refused,
                                   "GetUserDataFolder() failed.", refused, "GetUserDataFolder() failed."}));
    EXPECT_STREQ(gSettingsFolder, "");
    EXPECT_STREQ(gLogFolderPath, "");
    EXPECT_STRNE(gProductCommonFolder, "");

    gCommonDataFolder[0] = gProductCommonFolder[0] = '\0';
    gShellFolders = {folder / "Local", "", S_FALSE, -1};
    EXPECT_FALSE(InitAppFolders("Brillatrix", "Brillatrix Pro"));
    EXPECT_EQ(Messages(), (Strings{"SHGetFolderPath failed with GetFolderResult = '1' and  Last Error = '5'",
                                   "GetCommonDataFolder() failed to initialize the common data directory."}));
    EXPECT_TRUE(Exists(gLogFolder));
    EXPECT_STREQ(gProductCommonFolder, ""); // not one in the root of the drive
}

// A user called "\u0100lpha" where the code page makes "Alpha" of it, and "\u65E5" of which it makes "?": the
// folder of another user, and none at all, must not be written to. No short path is needed, which many disks
// lack.
TEST_F(AppFolders, AUserNameOutsideTheCodePageHasFoldersAndFiles) {
    const std::wstring root(folder.Path().begin(), folder.Path().end());
    for (const auto &[name, mangled] : {std::pair(L"\u0100lpha", "Alpha"), {L"\u65E5", "?"}}) {
        const std::wstring path = root + L"\\" + name;
        gShellFolders = {folder / mangled, folder / "Common", E_FAIL, -1, path};
        EXPECT_TRUE(InitAppFolders("Brillatrix", "Brillatrix Pro"));
        EXPECT_EQ(Messages(), Strings{});
        EXPECT_NE(strchr(gSettingsFolder, '?'), nullptr); // which leads nowhere, not to another user's
        EXPECT_TRUE(SaveUISettings() && LoadUISettings());
        EXPECT_NE(GetFileAttributesW((path + L"\\Nexorvanta\\Brillatrix\\Settings\\UISettings.bin").c_str()),
                  INVALID_FILE_ATTRIBUTES);
        EXPECT_NE(GetFileAttributesW((path + L"\\Nexorvanta\\Brillatrix\\Logs").c_str()),
                  INVALID_FILE_ATTRIBUTES);
        EXPECT_FALSE(Exists(folder / "Alpha"));
    }
}

// A day old and named as ours are: that is what a crash left.
TEST_F(AppFolders, LeftoversOfACrashGoAfterADay) {
    ASSERT_TRUE(InitAppFolders("Brillatrix", "Brillatrix Pro"));
    const auto write = [](const std::string &path, int hours) {
        WriteWholeFile(path, "");
        const HANDLE file =
            CreateFileA(path.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        FILETIME now;
        GetSystemTimeAsFileTime(&now);
        uint64_t ticks = (uint64_t(now.dwHighDateTime) << 32 | now.dwLowDateTime) - hours * 36000000000ull;
        memcpy(&now, &ticks, sizeof now);
        SetFileTime(file, nullptr, nullptr, &now);
        CloseHandle(file);
    };
    for (const std::string place : {gSettingsFolder, gParametersFolder})
        for (const auto &[name, hours, stays] : {std::tuple("brx1A2b.tmp", 25, false),
                                                 {"brx0123456789abcdef.tmp", 999, false},
                                                 {"brx1A2b.tmp", 23, true},
                                                 {"brxnotes.tmp", 99, true},
                                                 {"brx12.tmpx", 99, true},
                                                 {"brx1A2b.sss", 99, true}}) {
            write(place + "\\" + name, hours);
            InitAppFolders("Brillatrix", "Brillatrix Pro");
            EXPECT_EQ(Exists(place + "\\" + name), stays) << name;
        }
}

TEST_F(AppFolders, EachResultOfCreatingAFolderIsTold) {
    for (const int result : {0, 80, 183}) {
        gShellFolders.createResult = result;
        EXPECT_TRUE(MakeUserDataFolder("X:\\a")) << result;
        EXPECT_EQ(Messages(), Strings{});
    }
    for (const auto &[result, told] : {std::pair(3, ".  Result = '3'"),
                                       {161, ".  Result = 'A1'"},
                                       {206, ".  Result = 'CE'"},
                                       {1223, ".  Result = '4C7'"},
                                       {5, " with unexpected Result = '5'"}}) {
        gShellFolders.createResult = result;
        EXPECT_FALSE(MakeUserDataFolder("X:\\a"));
        EXPECT_EQ(Messages(),
                  Strings{std::string("SHCreateDirectoryEx failed") + told + " and Last Error = '1F'"});
    }
    const std::string refused =
        "SHCreateDirectoryEx failed with unexpected Result = '5' and Last Error = '1F'";
    EXPECT_FALSE(InitAppFolders("Brillatrix", "Brillatrix Pro"));
    EXPECT_EQ(
        Messages(),
        (Strings{
            refused,
            "MakeUserDataFolder() failed with Settings Subdirectory = 'Nexorvanta\\Brillatrix\\Settings'",
            refused,
            "MakeUserDataFolder() failed with Parameters Subdirectory = 'Nexorvanta\\Brillatrix\\Parameters'",
            refused,
            "MakeUserDataFolder() failed with DebugLog Subdirectory = 'Nexorvanta\\Brillatrix\\Logs'",
        }));
}

TEST_F(AppFolders, PathsThatAreTooLongFailAtTheCopyOrTheJoin) {
    char path[kMaxPath] = "unchanged";
    gShellFolders.localData = "C:\\Users";
    const std::string fits(kMaxPath - 1 - 9, 'r'), tooLong(kMaxPath - 9, 'r'), muchTooLong(2000, 'r');
    EXPECT_FALSE(GetUserDataFolder(tooLong.c_str(), path, sizeof path));
    const Strings copyFailed = Messages();
    ASSERT_EQ(copyFailed.size(), 1u);
    EXPECT_EQ(copyFailed[0].rfind("_tcscpy_s() failed with UserDirPath = 'rrr", 0), 0u);
    EXPECT_FALSE(GetUserDataFolder("ab", path, 11));
    EXPECT_EQ(Messages(), Strings{"_tcscpy_s() failed with UserDirPath = 'ab' and  CpyResult = '34'"});
    EXPECT_FALSE(GetUserDataFolder(muchTooLong.c_str(), path, sizeof path));
    EXPECT_EQ(Messages(), Strings{"_stprintf_s() failed with RootDirPath = 'C:\\Users' and  errno = '34'"});
    EXPECT_STREQ(path, "unchanged");
    EXPECT_TRUE(GetUserDataFolder(fits.c_str(), path, sizeof path));
    EXPECT_EQ(path, "C:\\Users\\" + fits);
    EXPECT_TRUE(GetUserDataFolder("ab", path, 12));

    const std::string longName(300, 'n');
    EXPECT_FALSE(InitAppFolders(longName.c_str(), std::string(990, 'n').c_str()));
    const Strings tooLongNames = Messages();
    ASSERT_EQ(tooLongNames.size(), 7u);
    EXPECT_EQ(tooLongNames[0],
              "_stprintf_s() failed with Settings Subdirectory of '" + longName + "' and  errno = '34'");
    EXPECT_STREQ(gSettingsFolder, "");
    EXPECT_STREQ(gProductCommonFolder, "");
}

} // namespace
