// The program's command line.
#pragma once

#include "host/batch/BatchOptions.h"
#include "host/pictures/PictureFiles.h"
#include "host/services/Descriptor.h"
#include "host/services/Document.h"

#include <optional>
#include <string>
#include <vector>

namespace host {

enum class ProgramTask { kFilter, kBatch, kInPlace, kWorker, kAbout, kHelp, kVersion, kPresets };

struct Options {
    ProgramTask task = ProgramTask::kFilter;
    std::string page; // of the help; empty: the first one
    std::wstring photo;
    std::wstring out;                 // empty: nothing but what a diagnostic caller is told
    std::vector<std::wstring> photos; // in place
    std::wstring plugin;              // empty: the module beside the program
    std::wstring filter;              // another filter's module, without the parameters of ours
    std::wstring mask;
    std::wstring settings;
    std::wstring preset;     // a saved set of the parameters folder
    std::wstring savePreset; // the name for a new one
    std::optional<Rectangle> roi;
    std::wstring contactSheet; // of all effects on the photo
    bool useLast = false;
    bool overwrites = false;
    bool keepsNoBackup = false;
    bool isQuiet = false;  // no progress and no notes but those of losses
    bool isSilent = false; // not even those
    bool showDialog = false;
    bool isStrict = true;
    int32_t depth = 0; // 0: the photo's own
    WriteOptions write;
    int32_t sheetSide = 0;    // of a batch's worker: of the small pictures for the sheet
    bool printLights = false; // from here on: for a diagnostic caller
    std::wstring lightsCsv;
    std::wstring lightsSvg;
    std::wstring debugImages; // a folder
    bool showLights = false;
    bool showDebug = false;
    std::vector<DescriptorValue> values; // of the parameters given, as a script carries them
    BatchOptions batch;
    std::vector<std::wstring> photoWords; // of the command line: what a batch's workers are told
};

// Whether the run tells about its lights, and whether with pictures.
bool WantsDiagnostics(const Options &options);
bool WantsDebugPictures(const Options &options);
// "-" as a file: what comes or goes over the standard streams.
bool IsStream(const std::wstring &file);
// Whether a window waits for somebody.
bool OpensWindows(const Options &options);

// Arguments without the program's name. False with a sentence for the user.
bool ParseOptions(const std::vector<std::wstring> &arguments, Options *options, std::string *why);

} // namespace host
