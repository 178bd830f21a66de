// What a batch tells while it runs and at its end.
#pragma once

#include "host/batch/BatchOptions.h"
#include "host/batch/OutputNames.h"
#include "host/workers/PhotoResult.h"

#include <windows.h>

#include <string>
#include <vector>

namespace host {

struct BatchReport {
    const BatchOptions &options;
    size_t total = 0, told = 0;
    size_t counts[5] = {}; // by PhotoState
    HANDLE json = nullptr; // null: standard output
    std::vector<std::wstring> failed;
    ULONGLONG begun = 0;
};

// Before a batch: a report replaces nothing but an older report. False with a reason.
bool CheckReports(const BatchOptions &options, const std::vector<BatchPhoto> &photos, std::string *why);
// False with a reason when the files for it cannot be written. A dry run writes none: its lines are printed.
bool BeginReport(BatchReport *report, size_t total, std::string *why);
void TellPhoto(BatchReport &report, const BatchPhoto &photo, const PhotoResult &result);
// The closing line and the list of what failed. False with a reason when that cannot be written.
bool EndReport(BatchReport *report, std::string *why);

// One line, without its end.
std::string JsonLine(const BatchPhoto &photo, const PhotoResult &result);

} // namespace host
