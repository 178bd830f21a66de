// Keeps the last ten logs of a folder: "<name>_00.log" is the newest, "<name>_09.log" the oldest.
#pragma once

#include <cstddef>

constexpr unsigned kMostLogs = 10;
// "<folder>\<name>_<number>.log". False, with *path unchanged, when it does not fit.
bool FormatLogPath(const char *folder, const char *name, unsigned number, char *path, size_t capacity);

// Deletes the logs that are too old or not numbered, moves the others up by one, and forms the path of the
// new log, number 00. A file that can be neither deleted nor moved ends the moving, is reported, and does no
// further harm: the new log then takes the place of the last one. False, reported, when no path could be
// formed. Host's thread.
bool RotateLogs(const char *folder, const char *name, char *newPath, size_t capacity);
