#include "tests/diag/LogFixture.h"

#include "diag/Log.h"
#include "diag/LogState.h"

#include <atomic>
#include <cstdint>
#include <regex>
#include <sstream>

namespace {

std::atomic<size_t> gMallocLimit = SIZE_MAX;
std::atomic<int> gLiveBlocks;

} // namespace

extern "C" void *__real_malloc(size_t size);
extern "C" void *__wrap_malloc(size_t size) {
    void *block = size < gMallocLimit ? __real_malloc(size) : nullptr;
    gLiveBlocks += block != nullptr;
    return block;
}
extern "C" void __real_free(void *block);
extern "C" void __wrap_free(void *block) {
    gLiveBlocks -= block != nullptr;
    __real_free(block);
}

int LiveBlocks() {
    return gLiveBlocks;
}

void FailMallocFrom(size_t size) {
    gMallocLimit = size;
}

void ForgetLog() {
    CloseLog();
    gLogState.setUpDone = gLogState.hasLog = false;
    gLogState.ownerWindow = nullptr;
    gLogState.ownerThread = 0;
    gLogState.path[0] = '\0';
    gLogState.traceSetupPath[0] = '\0';
    gLogFolderPath = "";
    gProductCommonFolderPath = "";
}

std::string ReadLogText(const std::string &path) {
    const std::string bytes = ReadWholeFile(path);
    EXPECT_EQ(bytes.substr(0, 2), "\xFF\xFE");
    EXPECT_EQ(bytes.size() % 2, 0u);
    std::string text;
    for (size_t i = 2; i + 1 < bytes.size(); i += 2)
        text += bytes[i + 1] == 0 ? bytes[i] : '?';
    return text;
}

std::vector<std::string> Lines(const std::string &text) {
    static const std::regex time("^[0-2][0-9]:[0-5][0-9]:[0-6][0-9] : ");
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(std::regex_replace(line, time, "TIME : "));
    return lines;
}

LogFixture::LogFixture() {
    ForgetLog();
    TakeBoxes();
    gLogFolderPath = folder.Path().c_str();
}

LogFixture::~LogFixture() {
    FailMallocFrom(SIZE_MAX);
    ForgetLog();
}

void LogFixture::Open() {
    OpenLog(GetDesktopWindow(), GetCurrentThreadId());
}

std::vector<std::string> LogFixture::LinesSoFar() const {
    std::vector<std::string> lines = Lines(ReadLogText(LogPath()));
    if (lines.size() < 2)
        return {"no header"};
    lines.erase(lines.begin(), lines.begin() + 2);
    return lines;
}
