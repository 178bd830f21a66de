// Stands in for the error reporter and the counted allocator in tests and benchmarks of the portable rooms:
// reports are kept, memory is counted, and the n-th allocation can be made to fail.
#pragma once

#include "diag/ErrorReport.h"

#include <cstdint>
#include <string>
#include <vector>

struct RecordedReport {
    ErrorRecord record;
    uint32_t messageBoxFlags;
    std::string title;
    std::string message;
};

// Takes all reports made since the last call. Any thread.
std::vector<RecordedReport> TakeReports();
// The same, each as one line: "site kind icon title: message".
std::vector<std::string> TakeReportLines();

// The n-th counted allocation from now on (1 = the next) fails, and every later one too when `andAllLater`.
// 0 switches failing off.
void FailAllocation(int64_t n, bool andAllLater);
// Counted allocations made since the last FailAllocation.
int64_t AllocationsMade();
// Most bytes held at once since the last reset.
int64_t PeakBufferBytes();
void ResetPeakBufferBytes();
