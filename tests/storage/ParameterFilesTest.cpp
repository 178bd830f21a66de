#include "storage/ParameterFiles.h"

#include "storage/AppFolders.h"
#include "tests/storage/SystemCalls.h"
#include "tests/storage/TemporaryFolder.h"
#include "tests/support/RecordingDiag.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>

namespace {

using Strings = std::vector<std::string>;

constexpr ParameterBlock kIdentity = {{0, 0, 0, 0, 0, 0, 5, 0}};
constexpr char kInvalidTitle[] = "Warning - Failed to Read Saved Parameter Set"; // as for a named set

// A stand-in for the frame's accessor: keeps what is committed, converts only when told to.
struct AccessorState {
    bool noIdentity, converts, refuses;
    int commits;
    ParameterBlock committed;
} gState;

uintptr_t TestAccessor(int32_t operation, const ParameterBlock *block) {
    switch (operation) {
    case kIdentityBlock:
        return gState.noIdentity ? 0 : reinterpret_cast<uintptr_t>(&kIdentity);
    case kCommitBlock:
        if (gState.refuses)
            return 0;
        ++gState.commits;
        gState.committed = *block;
        return 1;
    case kConvertBlock: {
        if (!gState.converts)
            return 0;
        auto *converted = static_cast<ParameterBlock *>(malloc(sizeof(ParameterBlock)));
        *converted = *block;
        converted->bytes[6] = 5;
        return reinterpret_cast<uintptr_t>(converted);
    }
    default:
        return 0;
    }
}

// A file opens although another program has locked its bytes; only reading them fails.
bool gReadLocked = false;

class InitialSettings : public testing::Test {
protected:
    InitialSettings() : path(folder / "LastSavedParameters.sss") {
        TakeReports();
        gState = {};
        gParameterBlockAccessor = TestAccessor;
    }
    ~InitialSettings() override {
        gParameterBlockAccessor = nullptr;
        FailNextCall("", 0);
    }

    bool Read() { return ReadInitialSettings(path.c_str()); }

    TemporaryFolder folder;
    std::string path;
};

// `size` bytes that begin with the current version and go on with recognisable values.
std::string Content(size_t size) {
    std::string content(reinterpret_cast<const char *>(kIdentity.bytes), 8);
    for (size_t i = 8; i < size; ++i)
        content += static_cast<char>(i % 251);
    content.resize(size);
    return content;
}

// kind, icon, title and text of each report, in one line each.
Strings Reports() {
    Strings lines;
    for (const RecordedReport &report : TakeReports())
        lines.push_back(std::to_string(report.record.kind) + " " + std::to_string(report.messageBoxFlags) +
                        " " + report.title + ": " + report.message);
    return lines;
}

std::string DebugLine(const std::string &message) {
    return "0 16 Debug:  Unexpected Error: " + message;
}

std::string Warning(const char *title, const std::string &message) {
    return std::string("1 48 ") + title + ": " + message;
}

// Of a file without a version.
const Strings kObsoleteReports = {
    DebugLine("User Setting File version mismatch. File Version = '0','0','0','0'"),
    Warning("Warning - Failed to Read Initial Settings Parameters",
            "Your Initial Settings Parameter Set file was saved in an obsolete format and is being deleted.  "
            "Parameters will be set to defaults.\r\n\r\nFile Version: Major Version = '0', Minor Version = "
            "'0', Revision = '0', Build = '0'")};

// Half a record of the current version is not a parameter set; what has no whole version is taken as version
// 0.
TEST_F(InitialSettings, AShortFileIsNeverCommittedAndGoes) {
    const std::string invalid =
        Warning(kInvalidTitle, "Your Parameter Set file '" + path + "' is invalid and is being deleted.\r\n");
    const Strings empty = {DebugLine("fread() failed with errno = '0'"), invalid};
    for (const size_t size : {0, 6, 7, 39}) {
        WriteWholeFile(path, Content(size));
        EXPECT_FALSE(Read() || Exists(path)) << size;
        EXPECT_EQ(Reports(), size == 0 ? empty : size == 6 ? kObsoleteReports : Strings{invalid});
    }
}

// Nothing is known of what these hold, so nothing is deleted and the user is not told that they are invalid.
TEST_F(InitialSettings, WhatCannotBeReadIsReportedAndStays) {
    const std::string cannotOpen =
        DebugLine("_tfopen() failed with FilePath = '" + path + "' and errno = '13'");
    MakeFolder(path);
    EXPECT_FALSE(Read());
    EXPECT_EQ(Reports(), Strings{cannotOpen});
    EXPECT_TRUE(Exists(path));
    RemoveDirectoryA(path.c_str());

    WriteWholeFile(path, Content(255));
    {
        const ExclusiveOpening open(path);
        EXPECT_FALSE(Read());
    }
    EXPECT_EQ(Reports(), Strings{cannotOpen});
    gReadLocked = true;
    EXPECT_FALSE(Read());
    gReadLocked = false;
    EXPECT_EQ(Reports(), Strings{DebugLine("fread() failed with errno = '13'")});
    EXPECT_EQ(ReadWholeFile(path), Content(255));
    EXPECT_EQ(gState.commits, 0);
}

// A good file must not be lost because the frame is not ready for it. A missing one is silent.
TEST_F(InitialSettings, WithoutAnAccessorOrAFileNothingIsTouched) {
    for (const std::string &name : {path, folder / "no\\such\\folder.sss"})
        EXPECT_FALSE(ReadInitialSettings(name.c_str()));
    EXPECT_EQ(Reports(), Strings{});
    WriteWholeFile(path, Content(255));
    gParameterBlockAccessor = nullptr;
    EXPECT_FALSE(Read());
    gParameterBlockAccessor = TestAccessor;
    for (bool AccessorState::*fault : {&AccessorState::noIdentity, &AccessorState::refuses}) {
        gState = {};
        gState.*fault = true;
        EXPECT_FALSE(Read());
    }
    EXPECT_EQ(Reports().size(), 3u);
    EXPECT_EQ(ReadWholeFile(path), Content(255));
}

TEST_F(InitialSettings, AConvertedFileIsToldSavedAndCommitted) {
    const std::string told = "1 64 Parameter Set Conversion: Your Initial Settings Parameter Set file '" +
                             path +
                             "' was saved in an older format and has been converted.\r\n\r\nThe converted "
                             "Parameter Set is being saved, "
                             "replacing the original file.";
    gState.converts = true;
    std::string old = Content(255);
    old[6] = 4;
    for (const bool saves : {true, false}) {
        WriteWholeFile(path, old);
        if (!saves)
            FailNextCall("MoveFileEx", ERROR_CRC);
        EXPECT_TRUE(Read());
        EXPECT_EQ(memcmp(gState.committed.bytes, Content(255).data(), 255), 0);
        EXPECT_EQ(ReadWholeFile(path), saves ? Content(255) : old);
        const Strings reports = Reports();
        ASSERT_EQ(reports.size(), saves ? 2u : 4u);
        EXPECT_EQ(reports[1], told);
        if (!saves) {
            EXPECT_EQ(reports[3],
                      "1 48 Warning - Parameter Set Conversion Failed: The converted Parameter Set file '" +
                          path + "' could not be saved.");
        }
    }
    EXPECT_EQ(gState.commits, 2);
}

TEST_F(InitialSettings, AreSavedWhereTheyAreRead) {
    char formatted[kMaxPath] = "unchanged";
    gSettingsFolder[0] = '\0';
    EXPECT_FALSE(FormatInitialSettingsPath(formatted, sizeof formatted));
    EXPECT_EQ(Reports().size(), 1u);
    strcpy(gSettingsFolder, folder.Path().c_str());
    EXPECT_FALSE(FormatInitialSettingsPath(formatted, path.size()));
    EXPECT_STREQ(formatted, "unchanged");
    EXPECT_TRUE(FormatInitialSettingsPath(formatted, path.size() + 1));
    EXPECT_EQ(formatted, path);
    EXPECT_EQ(Reports().size(), 1u);

    gSettingsFolder[0] = '\0';
}

} // namespace

extern "C" size_t __real_fread(void *data, size_t size, size_t count, FILE *file);
extern "C" size_t __wrap_fread(void *data, size_t size, size_t count, FILE *file) {
    if (!gReadLocked)
        return __real_fread(data, size, count, file);
    file->_flag |= _IOERR;
    errno = EACCES;
    return 0;
}
