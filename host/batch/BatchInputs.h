// Which photos a batch is to work on.
#pragma once

#include "host/batch/BatchOptions.h"

#include <string>
#include <vector>

namespace host {

struct BatchInput {
    std::wstring path;
    std::wstring below;   // the sub-folder of the folder that was given; empty: the folder itself, or a file
    bool isFound = false; // in a folder or by a pattern, and not named itself
};

// `*` is any run of characters, `?` one; the case of letters does not count.
bool MatchesPattern(const std::wstring &name, const std::wstring &pattern);

// By its ending, as photos are found in folders.
bool IsPhotoName(const std::wstring &name);

// In the order given, names in folders sorted, each photo once. A file that is not there is an input all the
// same: it fails later. False with a reason when there is nothing at all, and for lists that cannot be read.
bool FindInputs(const BatchOptions &options, std::vector<BatchInput> *inputs, std::string *why);

// Paths as they are compared: absolute, in small letters.
std::wstring ComparablePath(const std::wstring &path);
// `name` in `folder`, with the separator that the folder's name uses.
std::wstring JoinPath(const std::wstring &folder, const std::wstring &name);
// Where the file's name begins.
size_t NamePlace(const std::wstring &path);

} // namespace host
