// Under which names a batch writes.
#pragma once

#include "host/batch/BatchInputs.h"

#include <string>
#include <vector>

namespace host {

struct BatchPhoto {
    std::wstring input, output;
    bool isSkipped = false; // nothing is to be done,
    std::string reason;     // and why
};

// By the pattern alone. Photos that were only found in a folder and are results of others are left out, and
// have no number. False with a reason for a pattern that is none.
bool NameOutputs(const BatchOptions &options, std::vector<BatchInput> inputs, std::vector<BatchPhoto> *photos,
                 std::string *why);

// What is to become of names that are taken, by files or by other photos, as the options say; photos that are
// skipped already keep their names. False with a reason that names the first trouble.
bool SettleOutputs(const BatchOptions &options, std::vector<BatchPhoto> *photos, std::string *why);

} // namespace host
