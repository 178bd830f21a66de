// Where the command line wants what a diagnostic caller is told.
#pragma once

#include "host/options/Options.h"
#include "host/program/Diagnostics.h"

namespace host {

// A place that cannot be written, and why.
struct OutputFailure {
    std::wstring path;
    std::string why;
};

// The files that a run with these options writes beside OUT.
std::vector<std::wstring> ListDiagnosticFiles(const Options &options);
// Before a run, so that a wrong path costs no waiting: makes the pictures' folder and tries the others. False
// with the first failure; nothing is left of what was tried.
bool CheckDiagnosticPlaces(const Options &options, OutputFailure *failure);
// Prints the table and writes the files, each whole or not at all. The size is the photo's.
bool WriteDiagnostics(const Options &options, const Diagnostics &diagnostics, int32_t width, int32_t height,
                      OutputFailure *failure);

} // namespace host
