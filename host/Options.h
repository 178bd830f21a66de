// The program's command line.
#pragma once

#include "host/Descriptor.h"
#include "host/Document.h"

#include <optional>
#include <string>
#include <vector>

namespace host {

enum class ProgramTask { kFilter, kAbout, kHelp, kVersion };

struct Options {
    ProgramTask task = ProgramTask::kFilter;
    std::wstring photo;
    std::wstring out;
    std::wstring plugin; // empty: the module beside the program
    std::wstring mask;
    std::wstring settings;
    std::optional<Rectangle> roi;
    bool useLast = false;
    bool isQuiet = false;
    std::vector<DescriptorValue> values; // of the parameters given, as a script carries them
};

// Arguments without the program's name. False with a sentence for the user.
bool ParseOptions(const std::vector<std::wstring> &arguments, Options *options, std::string *why);

extern const char kHelpText[];

} // namespace host
