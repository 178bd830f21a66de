#include "host/program/Program.h"

#include "host/base/Display.h"
#include "host/base/FileBytes.h"
#include "host/base/SystemText.h"
#include "host/filter/FilterHost.h"
#include "host/module/ShownBoxes.h"
#include "host/pictures/PictureFiles.h"
#include "host/program/Console.h"
#include "host/program/DiagnosticOutput.h"
#include "host/program/Options.h"
#include "host/program/Parameters.h"
#include "host/program/ResultText.h"

#include <new>

#ifndef BRILLATRIX_VERSION // for tools that look at this file outside the build
#define BRILLATRIX_VERSION "unknown"
#endif

namespace host {

constexpr int16_t kTileSize = 1024;
constexpr wchar_t kModuleName[] = L"BrillatrixX64.8bf";

static void PrintProblem(const std::string &text) {
    PrintError("brillatrix: " + text + "\n");
}

static int FailFile(const std::string &what, const std::wstring &path, const std::string &why) {
    PrintProblem("cannot " + what + " " + ToUtf8(path) + ": " + why);
    return kExitFile;
}

static void PrintNote(const Options &options, const std::string &text) {
    if (!options.isQuiet)
        PrintProblem("note: " + text);
}

static std::wstring ModulePath(const Options &options) {
    if (!options.filter.empty() || !options.plugin.empty())
        return NativePath(options.filter.empty() ? options.plugin : options.filter);
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring program = path;
    return program.substr(0, program.find_last_of(L"\\/") + 1) + kModuleName;
}

// Nobody may be there to close a box, so it becomes a line. After Ctrl+C the plug-in's complaints are no
// news.
static intptr_t PrintBox(const ShownBox &box) {
    if (!IsCancelled())
        PrintProblem(box.title + ": " +
                     (box.isDialog ? "dialog " + box.dialogName + " is not shown" : box.text));
    return box.isDialog ? IDCANCEL : IDOK;
}

// Another filter goes on with what its dialog would have shown.
static intptr_t AcceptBox(const Options &options, const ShownBox &box) {
    if (!box.isDialog)
        return PrintBox(box);
    PrintNote(options, "dialog " + box.dialogName + " is not shown (--dialog shows it); its answer is OK");
    return IDOK;
}

static intptr_t PrintAboutBox(const ShownBox &box) {
    PrintOut(box.title + "\n" + box.text + "\n");
    return IDOK;
}

static int FailPlugin(int16_t code, const std::string &errorText) {
    if (IsCancelled() || code == kUserCanceledErr) {
        PrintProblem("cancelled");
        return kExitCancelled;
    }
    const bool hasText = code == kErrReportString && !errorText.empty();
    PrintProblem("the plug-in reported error " + std::to_string(code) + ": " +
                 (hasText ? errorText : ResultText(code)));
    return kExitPlugin;
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
    return code == kNoError ? kExitDone : FailPlugin(code, filterHost.log.errorText);
}

// What a run works on.
struct Job {
    Options options;
    Picture picture;
    PictureOrigin origin;
    Bytes mask;
    Descriptor parameters;
    HostMemory memory;
    DiagnosticCaller caller; // without a module: nothing is asked
    Diagnostics diagnostics;
    std::string diagnosticFailure;
};

static int ReadMask(Job *job) {
    const std::wstring &path = job->options.mask;
    if (path.empty())
        return kExitDone;
    Picture mask;
    std::string why;
    if (!ReadPicture(NativePath(path), &mask, &why))
        return FailFile("read", path, why);
    if (mask.width != job->picture.width || mask.height != job->picture.height)
        return FailFile("use", path,
                        "it has " + std::to_string(mask.width) + " x " + std::to_string(mask.height) +
                            " pixels, the photo " + std::to_string(job->picture.width) + " x " +
                            std::to_string(job->picture.height));
    job->mask = ToGrey8(mask);
    return kExitDone;
}

// Defaults, the last run's or a file's; then the options on top.
static int GatherParameters(Job *job) {
    std::string why;
    job->parameters = DescribeParameters(kDefaultParameters);
    if (job->options.useLast && job->memory.lastParameters)
        for (const DescriptorValue &value : job->memory.lastParameters->values)
            PutValue(job->parameters, value);
    else if (job->options.useLast)
        PrintNote(job->options, "there was no last run; the defaults are used");
    const std::wstring &path = job->options.settings;
    if (!path.empty() && !ReadSettingsFile(NativePath(path), &job->parameters, &why))
        return FailFile("read", path, why);
    for (const DescriptorValue &value : job->options.values)
        PutValue(job->parameters, value);
    return kExitDone;
}

static int PrepareJob(Job *job) {
    std::string why;
    if (!ReadPicture(NativePath(job->options.photo), &job->picture, &why, &job->origin))
        return FailFile("read", job->options.photo, why);
    for (const std::string &note : job->origin.notes)
        PrintNote(job->options, note);
    if (!job->options.out.empty() && !CanHoldPicture(job->options.out, job->picture, &why))
        return FailFile("write", job->options.out, why);
    OutputFailure failure;
    if (!CheckDiagnosticPlaces(job->options, &failure))
        return FailFile("write", failure.path, failure.why);
    const Rectangle image = {0, 0, job->picture.width, job->picture.height};
    if (job->options.roi && !Contains(image, *job->options.roi)) {
        PrintProblem("--roi reaches beyond the photo's " + std::to_string(image.right) + " x " +
                     std::to_string(image.bottom) + " pixels");
        return kExitUsage;
    }
    if (const int status = ReadMask(job))
        return status;
    if (!LoadHostMemory(&job->memory, &why))
        PrintNote(job->options, "the memory of the last run is not used: " + why);
    return GatherParameters(job);
}

// Memory may be short, and the filter's run must come to its end all the same.
static void AskDiagnostics(Job *job) {
    try {
        std::string why;
        if (!TakeDiagnostics(job->caller, WantsDebugPictures(job->options), &job->diagnostics, &why))
            job->diagnosticFailure = why;
    } catch (const std::bad_alloc &) {
        job->diagnosticFailure = "not enough memory";
    }
    if (!job->diagnosticFailure.empty() || !OpensWindows(job->options))
        return;
    EndProgressBar();
    ReleaseBoxes();
    if ((job->options.showLights && !ShowLightViewer(job->caller)) ||
        (job->options.showDebug && !ShowImageViewer(job->caller)))
        job->diagnosticFailure = "a viewer could not be opened";
}

static void SetUpHost(Job *job, FilterHost *filterHost) {
    filterHost->document = TakeDocument(job->picture);
    filterHost->document.mask = std::move(job->mask);
    filterHost->settings.filterRect = job->options.roi;
    filterHost->settings.tileWidth = filterHost->settings.tileHeight = kTileSize;
    filterHost->settings.isCancelled = IsCancelled;
    if (!job->options.isQuiet)
        filterHost->settings.onProgress = ShowProgressBar;
    if (job->options.showDialog)
        filterHost->settings.playInfo = kPlayDisplay;
    if (job->caller.module)
        filterHost->settings.afterStart = [job] { AskDiagnostics(job); };
    if (job->options.filter.empty())
        filterHost->script = job->parameters;
    filterHost->registry = job->memory.registry;
}

static void RememberRun(const FilterHost &filterHost, Job *job) {
    std::string why;
    job->memory.registry = filterHost.registry;
    if (filterHost.recorded && job->options.filter.empty())
        job->memory.lastParameters = filterHost.recorded;
    if (!SaveHostMemory(job->memory, &why))
        PrintNote(job->options, "the parameters of this run could not be kept: " + why);
}

// In a window the user can be asked; otherwise nobody may be there.
static RunResult PlayJob(Job *job, const FilterModule &module, FilterHost *filterHost) {
    const bool isOther = !job->options.filter.empty();
    if (!job->options.showDialog && isOther)
        CatchBoxes(module.module, [job](const ShownBox &box) { return AcceptBox(job->options, box); });
    else if (!job->options.showDialog)
        CatchBoxes(module.module, PrintBox);
    SetUpHost(job, filterHost);
    OpenHost(*filterHost, module);
    const RunResult result = RunFilter(*filterHost, isOther);
    CloseHost(*filterHost);
    ReleaseBoxes();
    EndProgressBar();
    return result;
}

static int TakeResult(const RunResult &result, FilterHost *filterHost, Job *job) {
    for (const std::string &violation : filterHost->log.violations)
        PrintNote(job->options, "the plug-in misbehaved: " + violation);
    if (result.code == kUserCanceledErr && job->options.showDialog && !IsCancelled()) {
        PrintProblem("cancelled in the dialog; nothing is written");
        return kExitCancelled;
    }
    if (!filterHost->log.refusal.empty()) {
        PrintProblem("the filter is not run: " + filterHost->log.refusal);
        return kExitPlugin;
    }
    const bool isPictureDone = result.code == kNoError || result.failedSelector == kSelectorFinish;
    if (result.code != kNoError && isPictureDone)
        PrintNote(job->options, "the parameters are not recorded: the plug-in reported error " +
                                    std::to_string(result.code) + " when the picture was done");
    if (!isPictureDone || IsCancelled())
        return FailPlugin(result.code, filterHost->log.errorText);
    if (!job->diagnosticFailure.empty()) {
        PrintProblem(job->diagnosticFailure);
        return kExitPlugin;
    }
    PutDocument(std::move(filterHost->document), job->picture);
    RememberRun(*filterHost, job);
    return kExitDone;
}

// Runs the filter on the job's picture.
static int FilterPicture(Job *job) {
    FilterModule module;
    std::string why;
    const std::wstring path = ModulePath(job->options);
    if (!LoadFilterModule(path, &module, &why))
        return FailFile("load", path, why);
    if (WantsDiagnostics(job->options) &&
        !BeginDiagnostics(module.module, WantsDebugPictures(job->options), &job->caller, &why)) {
        UnloadFilterModule(&module);
        return FailFile("ask", path, why);
    }
    FilterHost filterHost;
    const RunResult result = PlayJob(job, module, &filterHost);
    UnloadFilterModule(&module);
    return TakeResult(result, &filterHost, job);
}

static int WriteResult(const Job &job) {
    std::string why;
    OutputFailure failure;
    if (job.caller.module &&
        !WriteDiagnostics(job.options, job.diagnostics, job.picture.width, job.picture.height, &failure))
        return FailFile("write", failure.path, failure.why);
    if (job.options.out.empty())
        return kExitDone;
    if (!WritePicture(NativePath(job.options.out), job.picture, IsCancelled, &why, job.origin)) {
        if (!why.empty())
            return FailFile("write", job.options.out, why);
        PrintProblem("cancelled");
        return kExitCancelled;
    }
    for (const std::string &dropped : ListDropped(job.options.out, job.picture, job.origin, {}))
        PrintNote(job.options, dropped);
    return kExitDone;
}

static int RunJob(const Options &options) {
    Job job;
    job.options = options;
    std::string why;
    if (OpensWindows(options) && !HasDisplay(&why)) {
        PrintProblem("cannot open a window: " + why);
        return kExitNoScreen;
    }
    if (const int status = PrepareJob(&job))
        return status;
    if (const int status = FilterPicture(&job))
        return status;
    return WriteResult(job);
}

static int RunTask(const Options &options) {
    switch (options.task) {
    case ProgramTask::kHelp:
        PrintOut(kHelpText);
        return kExitDone;
    case ProgramTask::kVersion:
        PrintOut("brillatrix " BRILLATRIX_VERSION "\n");
        return kExitDone;
    case ProgramTask::kAbout:
        return ShowAbout(options);
    case ProgramTask::kFilter:
        break;
    }
    return RunJob(options);
}

int RunProgram(const std::vector<std::wstring> &arguments) {
    Options options;
    std::string why;
    if (!ParseOptions(arguments, &options, &why)) {
        PrintProblem(why + "\nbrillatrix --help tells how it is used");
        return kExitUsage;
    }
    WatchForCancel();
    try {
        return RunTask(options);
    } catch (const std::bad_alloc &) {
        PrintProblem("not enough memory");
        return kExitFile;
    }
}

} // namespace host
