// The program's command line.
#pragma once

#include "host/filter/Descriptor.h"
#include "host/filter/Document.h"

#include <optional>
#include <string>
#include <vector>

namespace host {

enum class ProgramTask { kFilter, kAbout, kHelp, kVersion };

struct Options {
    ProgramTask task = ProgramTask::kFilter;
    std::wstring photo;
    std::wstring out;    // empty: nothing but what a diagnostic caller is told
    std::wstring plugin; // empty: the module beside the program
    std::wstring filter; // another filter's module, without the parameters of ours
    std::wstring mask;
    std::wstring settings;
    std::optional<Rectangle> roi;
    bool useLast = false;
    bool isQuiet = false;
    bool showDialog = false;
    bool printLights = false; // from here on: for a diagnostic caller
    std::wstring lightsCsv;
    std::wstring lightsSvg;
    std::wstring debugImages; // a folder
    bool showLights = false;
    bool showDebug = false;
    std::vector<DescriptorValue> values; // of the parameters given, as a script carries them
};

// Whether the run tells about its lights, and whether with pictures.
bool WantsDiagnostics(const Options &options);
bool WantsDebugPictures(const Options &options);
// Whether a window waits for somebody.
bool OpensWindows(const Options &options);

// Arguments without the program's name. False with a sentence for the user.
bool ParseOptions(const std::vector<std::wstring> &arguments, Options *options, std::string *why);

extern const char kHelpText[];

} // namespace host
