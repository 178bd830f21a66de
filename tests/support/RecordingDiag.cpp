#include "tests/support/RecordingDiag.h"

#include "diag/BufferUsage.h"

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace {

// No mutex of the library: on some systems that makes system objects, which tests count.
std::atomic_flag gBusy;
struct Busy {
    Busy() {
        while (gBusy.test_and_set())
            ;
    }
    ~Busy() { gBusy.clear(); }
};
std::vector<RecordedReport> gReports;
int64_t gInUse = 0, gPeak = 0, gMade = 0, gFailAt = 0;
bool gFailLater = false;

// Counts one allocation; true when it is one that must fail.
bool MustFail() {
    const Busy busy;
    ++gMade;
    return gFailAt != 0 && (gFailLater ? gMade >= gFailAt : gMade == gFailAt);
}

void Count(int64_t bytes) {
    const Busy busy;
    gInUse += bytes;
    gPeak = std::max(gPeak, gInUse);
}

} // namespace

std::vector<RecordedReport> TakeReports() {
    const Busy busy;
    std::vector<RecordedReport> taken;
    taken.swap(gReports);
    return taken;
}

std::vector<std::string> TakeReportLines() {
    std::vector<std::string> lines;
    for (const RecordedReport &r : TakeReports())
        lines.push_back(std::to_string(r.record.line) + " " + std::to_string(r.record.kind) + " " +
                        std::to_string(r.messageBoxFlags) + " " + r.title + ": " + r.message);
    return lines;
}

void FailAllocation(int64_t n, bool andAllLater) {
    const Busy busy;
    gMade = 0;
    gFailAt = n;
    gFailLater = andAllLater;
}

int64_t AllocationsMade() {
    const Busy busy;
    return gMade;
}

int64_t PeakBufferBytes() {
    const Busy busy;
    return gPeak;
}

void ResetPeakBufferBytes() {
    const Busy busy;
    gPeak = gInUse;
}

void ReportError(const ErrorRecord &record, uint32_t messageBoxFlags, const char *title, const char *format,
                 ...) {
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    const Busy busy;
    gReports.push_back({record, messageBoxFlags, title, text});
}

bool CreateBufferUsageSection(uint32_t *) {
    return true;
}
void PassThroughBufferUsageSection() {}
void DeleteBufferUsageSection() {}

void *CountedAlloc(size_t size) {
    if (MustFail())
        return nullptr;
    void *block = malloc(size);
    if (block)
        Count(static_cast<int64_t>(size));
    return block;
}

void *CountedZeroAlloc(size_t size) {
    if (MustFail())
        return nullptr;
    void *block = calloc(size, 1);
    if (block)
        Count(static_cast<int64_t>(size));
    return block;
}

void *CountedRealloc(void *block, size_t oldSize, size_t newSize) {
    if (MustFail())
        return nullptr;
    void *grown = realloc(block, newSize);
    if (grown)
        Count(static_cast<int64_t>(newSize) - static_cast<int64_t>(oldSize));
    return grown;
}

void CountedFree(void *block, size_t size) {
    if (!block)
        return;
    free(block);
    Count(-static_cast<int64_t>(size));
}

int64_t BufferBytesInUse() {
    const Busy busy;
    return gInUse;
}
