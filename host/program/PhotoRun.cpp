#include "host/program/PhotoRun.h"

#include "host/base/Console.h"
#include "host/base/FileBytes.h"
#include "host/base/SystemText.h"
#include "host/module/ShownBoxes.h"
#include "host/options/Presets.h"
#include "host/pictures/PictureDepth.h"
#include "host/pictures/PictureFiles.h"
#include "host/program/DiagnosticOutput.h"
#include "host/program/PhotoDocument.h"
#include "host/program/ResultText.h"

#include <algorithm>
#include <new>

namespace host {

constexpr int16_t kTileSize = 1024;
constexpr wchar_t kModuleName[] = L"BrillatrixX64.8bf";

static PhotoOutcome FailWith(int status, const std::string &reason) {
    PhotoOutcome outcome;
    outcome.status = status;
    outcome.reason = reason;
    return outcome;
}

static PhotoOutcome FailFile(const std::string &what, const std::wstring &path, const std::string &why) {
    const std::string name = !IsStream(path)  ? ToUtf8(path)
                             : what == "read" ? "standard input"
                                              : "standard output";
    return FailWith(kExitFile, "cannot " + what + " " + name + ": " + why);
}

std::wstring ModulePath(const Options &options) {
    if (!options.filter.empty() || !options.plugin.empty())
        return NativePath(options.filter.empty() ? options.plugin : options.filter);
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring program = path;
    return program.substr(0, program.find_last_of(L"\\/") + 1) + kModuleName;
}

PhotoOutcome GatherParameters(const Options &options, const NoteTaker &say, const HostMemory &memory,
                              Descriptor *parameters) {
    std::string why;
    *parameters = DescribeParameters(kDefaultParameters);
    if (options.useLast && memory.lastParameters)
        for (const DescriptorValue &value : memory.lastParameters->values)
            PutValue(*parameters, value);
    else if (options.useLast)
        say(NoteKind::kNote, "there was no last run; the defaults are used");
    const std::wstring path = options.preset.empty() ? options.settings : PresetPath(options.preset);
    if (!path.empty() && !ReadSettingsFile(NativePath(path), parameters, &why))
        return FailFile("read", path, why);
    for (const DescriptorValue &value : options.values)
        PutValue(*parameters, value);
    return {};
}

PhotoOutcome BeginPhotos(PhotoSession *session) {
    std::string why;
    if (!LoadHostMemory(&session->memory, &why))
        session->say(NoteKind::kNote, "the memory of the last run is not used: " + why);
    PhotoOutcome gathered =
        GatherParameters(session->options, session->say, session->memory, &session->parameters);
    if (gathered.status != kExitDone)
        return gathered;
    const std::wstring path = ModulePath(session->options);
    return LoadFilterModule(path, &session->module, &why) ? PhotoOutcome() : FailFile("load", path, why);
}

void EndPhotos(PhotoSession *session) {
    UnloadFilterModule(&session->module);
}

// What one photo's run works on.
struct Job {
    PhotoSession &session;
    Options options;
    const std::wstring &photo, &out;
    Picture picture;
    PictureOrigin origin;
    Bytes mask;
    DiagnosticCaller caller; // without a module: nothing is asked
    Diagnostics diagnostics;
    std::string diagnosticFailure;
    SmallPicture before;
};

static PhotoOutcome ReadMask(Job *job) {
    const std::wstring &path = job->options.mask;
    if (path.empty())
        return {};
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
    return {};
}

static int32_t WrittenDepth(const Job &job) {
    return job.options.depth != 0 ? job.options.depth : job.picture.depth;
}

// Before anything is read, as far as that is possible.
static PhotoOutcome CheckPlaces(const Job &job) {
    std::string why;
    if (!job.out.empty() && !CheckOutputPlace(NativePath(job.out), &why))
        return FailFile("write", job.out, why);
    OutputFailure failure;
    if (!CheckDiagnosticPlaces(job.options, &failure))
        return FailFile("write", failure.path, failure.why);
    return {};
}

static PhotoOutcome CheckPicture(const Job &job) {
    std::string why;
    Picture written;
    written.depth = WrittenDepth(job);
    written.colourPlanes = job.picture.colourPlanes;
    if (!job.out.empty() && !CanHoldPicture(job.out, written, &why, job.options.write))
        return FailFile("write", job.out, why);
    const Rectangle image = {0, 0, job.picture.width, job.picture.height};
    if (job.options.roi && !Contains(image, *job.options.roi))
        return FailWith(kExitUsage, "--roi reaches beyond the photo's " + std::to_string(image.right) +
                                        " x " + std::to_string(image.bottom) + " pixels");
    return {};
}

// Stars are drawn at the finer of the two depths.
static void DeepenPicture(Job *job) {
    if (WrittenDepth(*job) > job->picture.depth)
        ConvertDepth(job->picture, WrittenDepth(*job));
}

static bool ReadPhoto(Job *job, std::string *why) {
    Bytes &input = job->session.standardInput;
    DWORD mode = 0;
    if (!IsStream(job->photo))
        return ReadPicture(NativePath(job->photo), &job->picture, why, &job->origin, job->options.isStrict);
    if (GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode))
        return Fail(why, "it is a terminal; < FILE or a pipe gives the picture");
    return (!input.empty() || ReadStandardInput(&input, why)) &&
           ReadPictureBytes(input, &job->picture, why, &job->origin, job->options.isStrict);
}

static PhotoOutcome PrepareJob(Job *job) {
    std::string why;
    PhotoOutcome outcome = CheckPlaces(*job);
    if (outcome.status != kExitDone)
        return outcome;
    if (!ReadPhoto(job, &why))
        return FailFile("read", job->photo, why);
    if (IsStream(job->out) && !job->options.write.format[0])
        job->options.write.format = OwnFormat(job->picture, job->origin.kind);
    for (const std::string &note : job->origin.notes)
        job->session.say(NoteKind::kLoss, note);
    outcome = CheckPicture(*job);
    if (outcome.status == kExitDone)
        outcome = ReadMask(job);
    if (outcome.status == kExitDone)
        DeepenPicture(job);
    if (outcome.status == kExitDone && job->session.smallSide > 0)
        job->before = ReducePicture(job->picture, job->session.smallSide);
    return outcome;
}

// Nobody may be there to close a box, so it becomes a line. After Ctrl+C the plug-in's complaints are no
// news. Another filter goes on with what its dialog would have shown.
static intptr_t AnswerBox(const Job &job, const ShownBox &box) {
    const NoteTaker &say = job.session.say;
    if (box.isDialog && !job.options.filter.empty()) {
        say(NoteKind::kNote,
            "dialog " + box.dialogName + " is not shown (--dialog shows it); its answer is OK");
        return IDOK;
    }
    if (!IsCancelled())
        say(NoteKind::kBox,
            box.title + ": " + (box.isDialog ? "dialog " + box.dialogName + " is not shown" : box.text));
    return box.isDialog ? IDCANCEL : IDOK;
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
        filterHost->script = job->session.parameters;
    filterHost->registry = job->session.memory.registry;
}

static void RememberRun(const FilterHost &filterHost, Job *job) {
    if (!job->session.remembersRuns)
        return;
    std::string why;
    HostMemory &memory = job->session.memory;
    memory.registry = filterHost.registry;
    if (filterHost.recorded && job->options.filter.empty())
        memory.lastParameters = filterHost.recorded;
    if (!SaveHostMemory(memory, &why))
        job->session.say(NoteKind::kNote, "the parameters of this run could not be kept: " + why);
}

// In a window the user can be asked; otherwise nobody may be there.
static RunResult PlayJob(Job *job, FilterHost *filterHost) {
    const FilterModule &module = job->session.module;
    if (!job->options.showDialog)
        CatchBoxes(module.module, [job](const ShownBox &box) { return AnswerBox(*job, box); });
    SetUpHost(job, filterHost);
    OpenHost(*filterHost, module);
    const RunResult result = RunFilter(*filterHost, !job->options.filter.empty());
    CloseHost(*filterHost);
    ReleaseBoxes();
    EndProgressBar();
    return result;
}

static PhotoOutcome FailPlugin(int16_t code, const std::string &errorText) {
    if (IsCancelled() || code == kUserCanceledErr)
        return FailWith(kExitCancelled, "cancelled");
    const bool hasText = code == kErrReportString && !errorText.empty();
    return FailWith(kExitPlugin, "the plug-in reported error " + std::to_string(code) + ": " +
                                     (hasText ? errorText : ResultText(code)));
}

static PhotoOutcome TakeResult(const RunResult &result, FilterHost *filterHost, Job *job) {
    const NoteTaker &say = job->session.say;
    for (const std::string &violation : filterHost->log.violations)
        say(NoteKind::kNote, "the plug-in misbehaved: " + violation);
    if (result.code == kUserCanceledErr && job->options.showDialog && !IsCancelled())
        return FailWith(kExitCancelled, "cancelled in the dialog; nothing is written");
    if (!filterHost->log.refusal.empty())
        return FailWith(kExitPlugin, "the filter is not run: " + filterHost->log.refusal);
    const bool isPictureDone = result.code == kNoError || result.failedSelector == kSelectorFinish;
    if (result.code != kNoError && isPictureDone)
        say(NoteKind::kNote, "the parameters are not recorded: the plug-in reported error " +
                                 std::to_string(result.code) + " when the picture was done");
    if (!isPictureDone || IsCancelled())
        return FailPlugin(result.code, filterHost->log.errorText);
    if (!job->diagnosticFailure.empty() && WantsDiagnostics(job->options))
        return FailWith(kExitPlugin, job->diagnosticFailure);
    PutDocument(std::move(filterHost->document), job->picture);
    if (filterHost->recorded && job->options.showDialog)
        job->session.parameters = *filterHost->recorded; // what the user chose is for the next photo too
    RememberRun(*filterHost, job);
    return {};
}

// A module that tells nothing about its lights is no reason to fail when nobody has asked.
static PhotoOutcome BeginTelling(Job *job) {
    std::string why;
    if (!job->options.filter.empty() ||
        BeginDiagnostics(job->session.module.module, WantsDebugPictures(job->options), &job->caller, &why) ||
        !WantsDiagnostics(job->options))
        return {};
    return FailFile("ask", ModulePath(job->options), why);
}

static void CountLights(const Job &job, PhotoOutcome *outcome) {
    if (!job.caller.module || !job.diagnosticFailure.empty())
        return;
    const std::vector<DiagnosticLight> &lights = job.diagnostics.lights;
    outcome->lights = static_cast<int64_t>(lights.size());
    outcome->stars = std::count_if(lights.begin(), lights.end(),
                                   [](const DiagnosticLight &light) { return light.drawn != 0; });
    if (outcome->lights == 0)
        job.session.say(NoteKind::kNote, "no lights were found: there are no stars");
    else if (outcome->stars == 0)
        job.session.say(NoteKind::kNote, "none of the " + std::to_string(outcome->lights) +
                                             " lights passes the threshold: there are no stars");
}

static std::string DepthLoss(int32_t from, int32_t to) {
    return "the samples are reduced from " + std::to_string(from) + " to " + std::to_string(to) + " bits" +
           (from == 32 ? "; what was below 0 or above 1 is cut" : "");
}

static PhotoOutcome WriteResult(Job *job) {
    std::string why;
    OutputFailure failure;
    const NoteTaker &say = job->session.say;
    if (WantsDiagnostics(job->options) &&
        !WriteDiagnostics(job->options, job->diagnostics, job->picture.width, job->picture.height, &failure))
        return FailFile("write", failure.path, failure.why);
    if (job->out.empty())
        return {};
    const int32_t depth = WrittenDepth(*job);
    if (depth < job->picture.depth) {
        say(NoteKind::kLoss, DepthLoss(job->picture.depth, depth));
        ConvertDepth(job->picture, depth);
    }
    if (!WritePicture(NativePath(job->out), job->picture, IsCancelled, &why, job->origin, job->options.write))
        return why.empty() ? FailWith(kExitCancelled, "cancelled") : FailFile("write", job->out, why);
    for (const std::string &dropped : ListDropped(job->out, job->picture, job->origin, job->options.write))
        say(NoteKind::kLoss, dropped);
    return {};
}

static PhotoOutcome RunJob(Job *job) {
    PhotoOutcome outcome = PrepareJob(job);
    if (outcome.status == kExitDone)
        outcome = BeginTelling(job);
    if (outcome.status != kExitDone)
        return outcome;
    FilterHost filterHost;
    const RunResult result = PlayJob(job, &filterHost);
    outcome = TakeResult(result, &filterHost, job);
    if (outcome.status != kExitDone)
        return outcome;
    SmallPicture after;
    if (job->session.smallSide > 0)
        after = ReducePicture(job->picture, job->session.smallSide);
    PhotoOutcome written = WriteResult(job);
    if (written.status == kExitDone)
        CountLights(*job, &written);
    written.before = std::move(job->before);
    written.after = std::move(after);
    return written;
}

PhotoOutcome RunPhoto(PhotoSession &session, const std::wstring &photo, const std::wstring &out) {
    try {
        Job job{session, session.options, photo, out, {}, {}, {}, {}, {}, {}, {}};
        return RunJob(&job);
    } catch (const std::bad_alloc &) {
        EndProgressBar();
        return FailWith(kExitFile, "not enough memory");
    }
}

} // namespace host
