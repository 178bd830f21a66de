// A log in a folder of the test's own, and its lines.
#pragma once

#include "tests/storage/SystemCalls.h"
#include "tests/storage/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

// Makes the process look as if OpenLog had never been called.
void ForgetLog();

// The text of a log: byte-order mark checked and taken off, UTF-16 to narrow characters (beyond 255: '?').
std::string ReadLogText(const std::string &path);
// The lines of a text, each time of day in them replaced by "TIME".
std::vector<std::string> Lines(const std::string &text);

// Makes every malloc of at least this many bytes fail; SIZE_MAX for none.
void FailMallocFrom(size_t size);
// Blocks from malloc that nobody has freed.
int LiveBlocks();

class LogFixture : public testing::Test {
protected:
    LogFixture();
    ~LogFixture() override;

    void Open();
    // Everything after the header of the test's log.
    std::vector<std::string> LinesSoFar() const;
    std::string LogPath() const { return folder / "Brillatrix Pro_00.log"; }

    TemporaryFolder folder;
};
