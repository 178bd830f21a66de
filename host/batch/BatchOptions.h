// What a batch is asked to do.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace host {

enum class ExistingRule { kFail, kSkip, kOverwrite, kNumber };
enum class ProgressForm { kAutomatic, kPlain, kNone };

struct BatchOptions {
    std::vector<std::wstring> inputs; // files, folders, patterns, "@list", "-"
    std::wstring outFolder;           // empty: beside each photo
    std::wstring namePattern = L"{name}_stars.{ext}";
    std::wstring presetName; // for {preset}
    bool isRecursive = false;
    std::vector<std::wstring> includes, excludes; // patterns of file names
    ExistingRule existing = ExistingRule::kFail;
    int32_t jobs = 0;   // 0: one a core
    int32_t memory = 0; // in MB; 0: half of what is free
    bool stopsOnError = false;
    int32_t timeout = 0; // in seconds a photo; 0: none
    bool resumes = false;
    bool isDryRun = false;
    bool writesJson = false;
    std::wstring json; // empty or "-": standard output
    ProgressForm progress = ProgressForm::kAutomatic;
    bool isQuiet = false;  // no bar, no closing line, no notes but those of losses
    bool isSilent = false; // not even those
    std::wstring failedList;
    std::wstring contactSheet; // before and after; empty: none
};

} // namespace host
