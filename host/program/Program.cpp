#include "host/program/Program.h"

#include "host/base/Console.h"
#include "host/base/Display.h"
#include "host/base/FileBytes.h"
#include "host/base/SystemText.h"
#include "host/batch/BatchInputs.h"
#include "host/batch/BatchRun.h"
#include "host/module/ShownBoxes.h"
#include "host/options/HelpText.h"
#include "host/options/Options.h"
#include "host/options/Presets.h"
#include "host/program/DiagnosticOutput.h"
#include "host/program/EffectSheet.h"
#include "host/program/InPlace.h"
#include "host/program/PhotoRun.h"
#include "host/program/ResultText.h"
#include "host/workers/Worker.h"

#include <new>
#include <set>

#ifndef BRILLATRIX_VERSION // for tools that look at this file outside the build
#define BRILLATRIX_VERSION "unknown"
#endif

namespace host {

static void PrintProblem(const std::string &text) {
    PrintError("brillatrix: " + text + "\n");
}

static int FailFile(const std::string &what, const std::wstring &path, const std::string &why) {
    PrintProblem("cannot " + what + " " + ToUtf8(path) + ": " + why);
    return kExitFile;
}

static NoteTaker PrintNotes(const Options &options) {
    return [&options](NoteKind kind, const std::string &text) {
        if (kind == NoteKind::kBox)
            PrintProblem(text);
        else if (kind == NoteKind::kLoss && !options.isSilent)
            PrintProblem("warning: " + text);
        else if (kind == NoteKind::kNote && !options.isQuiet)
            PrintProblem("note: " + text);
    };
}

static intptr_t PrintAboutBox(const ShownBox &box) {
    PrintOut(box.title + "\n" + box.text + "\n");
    return IDOK;
}

static int ShowAbout(const Options &options) {
    FilterModule module;
    std::string why;
    const std::wstring path = ModulePath(options);
    if (!LoadFilterModule(path, &module, &why))
        return FailFile("load", path, why);
    CatchBoxes(module.module, PrintAboutBox, true);
    FilterHost filterHost;
    OpenHost(filterHost, module);
    PrintOut(module.pipl.name + " (" + module.pipl.category + ")\n");
    const int16_t code = CallAbout(filterHost);
    CloseHost(filterHost);
    ReleaseBoxes();
    UnloadFilterModule(&module);
    if (code == kNoError)
        return kExitDone;
    PrintProblem("the plug-in reported error " + std::to_string(code) + ": " + ResultText(code));
    return kExitPlugin;
}

static int ShowHelp(const Options &options) {
    const std::string text = HelpText(options.page);
    if (text.empty()) {
        PrintProblem("there is no command \"" + options.page + "\"; the commands are batch and inplace");
        return kExitUsage;
    }
    PrintOut(text);
    return kExitDone;
}

static int Tell(const PhotoOutcome &outcome) {
    if (outcome.status != kExitDone)
        PrintProblem(outcome.reason);
    return outcome.status;
}

static int SaveParameters(const Options &options) {
    HostMemory memory;
    std::string why;
    Descriptor parameters;
    LoadHostMemory(&memory, &why);
    const PhotoOutcome gathered = GatherParameters(options, PrintNotes(options), memory, &parameters);
    if (gathered.status != kExitDone)
        return Tell(gathered);
    // Runs over many photos take no --overwrite.
    const bool isMany = options.task == ProgramTask::kBatch || options.task == ProgramTask::kInPlace;
    const std::string advice = isMany
                                   ? "take another name, or replace it first: brillatrix --save-preset NAME "
                                     "--overwrite, with the parameters"
                                   : "--overwrite replaces it";
    if (!SavePreset(options.savePreset, parameters, options.overwrites, advice, &why))
        return FailFile("save the preset", options.savePreset, why);
    return kExitDone;
}

static int UsePresets(const Options &options) {
    if (!options.savePreset.empty())
        return SaveParameters(options);
    for (const std::wstring &name : ListPresets())
        PrintOut(ToUtf8(name) + "\n");
    return kExitDone;
}

static bool MayOpenWindows(const Options &options, std::string *why) {
    return !OpensWindows(options) || HasDisplay(why);
}

// A folder in its place is told when the place is tried.
static bool WouldReplace(const Options &options, const std::wstring &file) {
    const DWORD attributes = GetFileAttributesW(NativePath(file).c_str());
    return !file.empty() && !IsStream(file) && !options.overwrites && attributes != INVALID_FILE_ATTRIBUTES &&
           !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

// Nothing is replaced unasked, and what is told beside OUT never replaces the photo.
static bool CheckResults(const Options &options) {
    std::vector<std::wstring> files = ListDiagnosticFiles(options);
    std::set<std::wstring> taken = {ComparablePath(options.out)};
    if (!IsStream(options.photo))
        taken.insert(ComparablePath(options.photo));
    for (const std::wstring &file : files)
        if (!taken.insert(ComparablePath(file)).second) {
            FailFile("write", file, "it is PHOTO, OUT or another result");
            return false;
        }
    files.insert(files.begin(), options.out);
    for (const std::wstring &file : files)
        if (WouldReplace(options, file)) {
            FailFile("write", file, "it exists already; --overwrite replaces it");
            return false;
        }
    return true;
}

// What stands in the way before any work.
static int CheckStart(const Options &options) {
    std::string why;
    if (!MayOpenWindows(options, &why)) {
        PrintProblem("cannot open a window: " + why);
        return kExitNoScreen;
    }
    if (!CheckResults(options))
        return kExitFile;
    if (!options.contactSheet.empty() && !CheckSheetPlace(options.contactSheet, &why))
        return FailFile("write", options.contactSheet, why);
    return options.savePreset.empty() ? kExitDone : SaveParameters(options);
}

static int RunOne(const Options &options) {
    if (const int status = CheckStart(options))
        return status;
    PhotoSession session{options, PrintNotes(options), true, {}, {}, {}, 0, {}};
    PhotoOutcome outcome = BeginPhotos(&session);
    if (outcome.status == kExitDone && (!options.out.empty() || WantsDiagnostics(options)))
        outcome = RunPhoto(session, options.photo, options.out);
    if (outcome.status == kExitDone && !options.contactSheet.empty())
        outcome = MakeEffectSheet(session);
    EndPhotos(&session);
    return Tell(outcome);
}

static int ReplacePhotos(const Options &options) {
    if (const int status = CheckStart(options))
        return status;
    PhotoSession session{options, PrintNotes(options), true, {}, {}, {}, 0, {}};
    const PhotoOutcome begun = BeginPhotos(&session);
    const int status = begun.status != kExitDone ? Tell(begun) : RunInPlace(session, Tell);
    EndPhotos(&session);
    return status;
}

static int RunMany(const Options &options) {
    if (const int status = options.savePreset.empty() ? kExitDone : SaveParameters(options))
        return status;
    std::vector<std::wstring> words = options.photoWords;
    words.insert(words.begin(), L"worker");
    return RunBatch(options.batch, words);
}

static PhotoResult ResultOf(const PhotoOutcome &outcome, PhotoResult told) {
    told.state = outcome.status == kExitDone        ? PhotoState::kDone
                 : outcome.status == kExitCancelled ? PhotoState::kCancelled
                                                    : PhotoState::kFailed;
    told.status = outcome.status;
    told.reason = outcome.reason;
    told.lights = outcome.lights;
    told.stars = outcome.stars;
    told.before = outcome.before;
    told.after = outcome.after;
    return told;
}

// What a photo's run says goes with its result.
static int ServeBatch(const Options &options) {
    PhotoResult told;
    const NoteTaker say = [&told](NoteKind kind, const std::string &text) {
        (kind == NoteKind::kBox    ? told.boxes
         : kind == NoteKind::kLoss ? told.losses
                                   : told.notes)
            .push_back(text);
    };
    PhotoSession session{options, say, false, {}, {}, {}, options.sheetSide, {}};
    const PhotoResult begun = ResultOf(BeginPhotos(&session), {});
    const int status = ServePhotos(begun, [&](const std::wstring &input, const std::wstring &output) {
        told = {};
        const PhotoOutcome outcome = RunPhoto(session, input, output);
        return ResultOf(outcome, told);
    });
    EndPhotos(&session);
    return status;
}

static int RunTask(const Options &options) {
    switch (options.task) {
    case ProgramTask::kHelp:
        return ShowHelp(options);
    case ProgramTask::kVersion:
        PrintOut("brillatrix " BRILLATRIX_VERSION "\n");
        return kExitDone;
    case ProgramTask::kAbout:
        return ShowAbout(options);
    case ProgramTask::kPresets:
        return UsePresets(options);
    case ProgramTask::kBatch:
        return RunMany(options);
    case ProgramTask::kWorker:
        return ServeBatch(options);
    case ProgramTask::kInPlace:
        return ReplacePhotos(options);
    default:
        return RunOne(options);
    }
}

// The console goes with the program: what it says can be read first.
static void WaitForReader() {
    PrintError("Press Enter to close this window.\n");
    char letter = 0;
    DWORD count = 1;
    const HANDLE keys = GetStdHandle(STD_INPUT_HANDLE);
    while (letter != '\n' && count == 1 && ReadFile(keys, &letter, 1, &count, nullptr))
        continue;
}

static int RunDropped(std::vector<std::wstring> arguments) {
    arguments.insert(arguments.begin(), {L"inplace", L"--dialog", L"--"});
    const int status = RunProgram(arguments);
    if (status != kExitDone && status != kExitCancelled)
        WaitForReader();
    return status;
}

int RunProgram(const std::vector<std::wstring> &arguments) {
    Options options;
    std::string why;
    if (AreDroppedFiles(arguments))
        return RunDropped(arguments);
    if (!ParseOptions(arguments, &options, &why)) {
        PrintProblem(why + "\nbrillatrix --help tells how it is used");
        if (arguments.empty() && HasOwnConsole()) // a double click
            WaitForReader();
        return kExitUsage;
    }
    WatchForCancel(options.task == ProgramTask::kBatch);
    try {
        return RunTask(options);
    } catch (const std::bad_alloc &) {
        PrintProblem("not enough memory");
        return kExitFile;
    }
}

} // namespace host
