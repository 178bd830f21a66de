// Whole files in, and files out that appear under their name only when they are complete.
#pragma once

#include "host/base/ByteStream.h"

#include <windows.h>

#include <string>

namespace host {

// False with a reason. Files of 4 GB and more are refused.
bool ReadWholeFile(const std::wstring &path, Bytes *bytes, std::string *why);
// The same of as many bytes at most.
bool ReadFileStart(const std::wstring &path, uint64_t most, Bytes *bytes, std::string *why);

// What comes over standard input, to its end. False with a reason.
bool ReadStandardInput(Bytes *bytes, std::string *why);

// As a path: standard output, which takes a file when it is complete.
constexpr wchar_t kStandardStream[] = L"-";

// A file being written beside its final place. Zero-initialised it is closed.
struct OutputFile {
    HANDLE handle = INVALID_HANDLE_VALUE;
    std::wstring path;
    std::wstring temporaryPath;
};

// Where a process writes a file that is not finished.
std::wstring TemporaryPath(const std::wstring &path, uint32_t processId);
// Of a process that has ended.
void RemoveTemporary(const std::wstring &path, uint32_t processId);
// Before work: false with a reason when a file of that name could not be written. Leaves nothing.
bool CheckOutputPlace(const std::wstring &path, std::string *why);
bool DoesFileExist(const std::wstring &path);

bool BeginOutput(const std::wstring &path, OutputFile *file, std::string *why);
bool AppendOutput(OutputFile *file, const void *bytes, size_t length, std::string *why);
// Puts the finished file in its place, over an older one. After a failure nothing is left of it.
bool CommitOutputFile(OutputFile *file, std::string *why);
// Closes the file for somebody who writes to `temporaryPath` by its name, and opens it again when that is
// done.
void LendOutput(OutputFile *file);
bool TakeOutputBack(OutputFile *file, std::string *why);
// A temporary file of other makers, known from here on to RemoveTemporaries, or no more.
void NoteTemporary(const std::wstring &path);
void ForgetTemporary(const std::wstring &path);
// For a process that ends at once, on a thread of its own: whatever it has not finished is removed.
void RemoveTemporaries();
// Whether there is hardly any room left where the file is.
bool IsDiskFull(const std::wstring &path);
// Throws away what was written. Does nothing to a file that was not begun.
void DiscardOutput(OutputFile *file);

// All four in one.
bool WriteWholeFile(const std::wstring &path, const Bytes &bytes, std::string *why);

// A path as the system's file functions want it. Shell scripts under Wine hand over paths like
// /home/x/photo.jpg.
std::wstring NativePath(const std::wstring &path);

} // namespace host
