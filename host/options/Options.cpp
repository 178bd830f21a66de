#include "host/options/Options.h"

#include "host/base/SystemText.h"
#include "host/options/ParameterOptions.h"
#include "host/options/Parameters.h"
#include "host/options/Spelling.h"
#include "plugin/interface/ScriptKeys.h"

#include <algorithm>

namespace host {

constexpr int32_t kLongestTimeout = 86400; // seconds
constexpr int32_t kLargestSheetSide = 4096;
constexpr int32_t kMostJobs = 64, kMostMemory = 1000000;

// Where an option may stand.
enum CommandSet : unsigned {
    kSingle = 1,
    kMany = 2,
    kInPlace = 4,
    kAnywhere = kSingle | kMany | kInPlace,
};

// One option at work: its name as it was typed, and its value.
struct GivenOption {
    std::wstring name, value;
    std::string *why;
};

static bool Refuse(const GivenOption &given, const std::string &what) {
    return Fail(given.why, ToUtf8(given.name) + " " + what + ", not \"" + ToUtf8(given.value) + "\"");
}

static BatchOptions &Batch(Options &options) {
    return options.batch;
}

template <auto Member> static bool TakeText(Options &options, const GivenOption &given) {
    options.*Member = given.value;
    return true;
}
template <auto Member> static bool TakeBatchText(Options &options, const GivenOption &given) {
    Batch(options).*Member = given.value;
    return true;
}
template <auto Member> static bool AddBatchText(Options &options, const GivenOption &given) {
    (Batch(options).*Member).push_back(given.value);
    return true;
}
template <auto Member, bool Value = true> static bool TakeSwitch(Options &options, const GivenOption &) {
    options.*Member = Value;
    return true;
}
template <auto Member> static bool TakeBatchSwitch(Options &options, const GivenOption &) {
    Batch(options).*Member = true;
    return true;
}
template <ProgramTask Task> static bool TakeTask(Options &options, const GivenOption &) {
    options.task = Task;
    return true;
}

static bool TakeWholeBetween(const GivenOption &given, int32_t least, int32_t most, int32_t *number) {
    int32_t whole;
    if (!ParseWhole(given.value, &whole) || whole < least || whole > most)
        return Refuse(given, "goes from " + std::to_string(least) + " to " + std::to_string(most));
    *number = whole;
    return true;
}
template <auto Member, int32_t Most> static bool TakeBatchWhole(Options &options, const GivenOption &given) {
    return TakeWholeBetween(given, 1, Most, &(Batch(options).*Member));
}
static bool TakeQuality(Options &options, const GivenOption &given) {
    return TakeWholeBetween(given, 1, 100, &options.write.quality);
}

template <typename Value> struct Choice {
    const wchar_t *name;
    Value value;
};

template <typename Value, size_t Count>
static bool TakeChoice(const GivenOption &given, const Choice<Value> (&choices)[Count], Value *value) {
    std::string names;
    for (const Choice<Value> &choice : choices) {
        if (given.value == choice.name) {
            *value = choice.value;
            return true;
        }
        names += (names.empty() ? "" : ", ") + ToUtf8(choice.name);
    }
    return Refuse(given, "takes one of " + names);
}

static bool TakeSubsampling(Options &options, const GivenOption &given) {
    static constexpr Choice<Subsampling> kChoices[] = {{L"444", Subsampling::k444},
                                                       {L"420", Subsampling::k420}};
    return TakeChoice(given, kChoices, &options.write.subsampling);
}

static bool TakeCompression(Options &options, const GivenOption &given) {
    static constexpr Choice<int> kChoices[] = {{L"none", kVipsTiffNone},
                                               {L"lzw", kVipsTiffLzw},
                                               {L"deflate", kVipsTiffDeflate},
                                               {L"packbits", kVipsTiffPackBits},
                                               {L"jpeg", kVipsTiffJpeg}};
    return TakeChoice(given, kChoices, &options.write.compression);
}

static bool TakeDepth(Options &options, const GivenOption &given) {
    static constexpr Choice<int32_t> kChoices[] = {{L"8", 8}, {L"16", 16}, {L"32", 32}};
    return TakeChoice(given, kChoices, &options.depth);
}

static bool TakeMetadata(Options &options, const GivenOption &given) {
    static constexpr Choice<MetadataChoice> kChoices[] = {{L"keep", MetadataChoice::kKeep},
                                                          {L"no-gps", MetadataChoice::kNoPlace},
                                                          {L"none", MetadataChoice::kNone}};
    return TakeChoice(given, kChoices, &options.write.metadata);
}

static bool TakeExisting(Options &options, const GivenOption &given) {
    static constexpr Choice<ExistingRule> kChoices[] = {{L"fail", ExistingRule::kFail},
                                                        {L"skip", ExistingRule::kSkip},
                                                        {L"overwrite", ExistingRule::kOverwrite},
                                                        {L"number", ExistingRule::kNumber}};
    return TakeChoice(given, kChoices, &Batch(options).existing);
}

static bool TakeOnError(Options &options, const GivenOption &given) {
    static constexpr Choice<bool> kChoices[] = {{L"continue", false}, {L"stop", true}};
    return TakeChoice(given, kChoices, &Batch(options).stopsOnError);
}

static bool TakeProgress(Options &options, const GivenOption &given) {
    static constexpr Choice<ProgressForm> kChoices[] = {{L"auto", ProgressForm::kAutomatic},
                                                        {L"plain", ProgressForm::kPlain},
                                                        {L"none", ProgressForm::kNone}};
    return TakeChoice(given, kChoices, &Batch(options).progress);
}

static bool TakeJson(Options &options, const GivenOption &given) {
    Batch(options).writesJson = true;
    Batch(options).json = given.value;
    return true;
}

static bool TakeQuiet(Options &options, const GivenOption &) {
    options.isQuiet = Batch(options).isQuiet = true;
    return true;
}

static bool TakeSilent(Options &options, const GivenOption &) {
    options.isQuiet = options.isSilent = Batch(options).isQuiet = Batch(options).isSilent = true;
    return true;
}

static bool TakeContactSheet(Options &options, const GivenOption &given) {
    if (IsStream(given.value))
        return Fail(given.why, "--contact-sheet needs the name of a file");
    options.contactSheet = Batch(options).contactSheet = given.value;
    return true;
}

static bool TakeSheetSide(Options &options, const GivenOption &given) {
    return TakeWholeBetween(given, 1, kLargestSheetSide, &options.sheetSide);
}

static bool TakeFormat(Options &options, const GivenOption &given) {
    const char *ending = FindEnding(ToUtf8(given.value));
    if (!ending)
        return Refuse(given, "takes one of " + ListFormats());
    options.write.format = ending;
    return true;
}

static bool TakePreset(Options &options, const GivenOption &given) {
    options.preset = Batch(options).presetName = given.value;
    return true;
}

static bool TakeEffectsOnly(Options &options, const GivenOption &) {
    options.values.push_back(BooleanValue(kKeyOutputSpikesOnly, true));
    return true;
}

static bool TakeEffect(Options &options, const GivenOption &given) {
    uint32_t code;
    if (!FindEffect(ToUtf8(given.value), &code))
        return Fail(given.why,
                    "there is no effect \"" + ToUtf8(given.value) + "\"; the effects are " + ListEffects());
    options.values.push_back(EnumeratedValue(kKeyEffect, kTypeEffect, code));
    return true;
}

static bool TakeRoi(Options &options, const GivenOption &given) {
    int32_t edges[4];
    size_t at = 0;
    bool isGood = true;
    for (int i = 0; i < 4 && isGood; i++) {
        const size_t comma = given.value.find(L',', at);
        isGood = (comma == std::wstring::npos) == (i == 3) &&
                 ParseWhole(given.value.substr(at, comma - at), &edges[i]);
        at = comma + 1;
    }
    if (!isGood || edges[0] >= edges[2] || edges[1] >= edges[3])
        return Refuse(given, "needs LEFT,TOP,RIGHT,BOTTOM with something inside");
    options.roi = Rectangle{edges[0], edges[1], edges[2], edges[3]};
    return true;
}

enum class ValueNeed { kNone, kNeeded, kJsonFile };

struct OptionRow {
    const wchar_t *name;
    unsigned commands;
    ValueNeed need;
    bool (*take)(Options &options, const GivenOption &given);
    bool isOfPhoto = true; // a batch's workers are told of it
};

static constexpr ValueNeed kNo = ValueNeed::kNone, kYes = ValueNeed::kNeeded;
static const OptionRow kRows[] = {
    {L"--effect", kAnywhere, kYes, TakeEffect},
    {L"--effects-only", kAnywhere, kNo, TakeEffectsOnly},
    {L"--settings", kAnywhere, kYes, TakeText<&Options::settings>},
    {L"--preset-file", kAnywhere, kYes, TakeText<&Options::settings>},
    {L"--preset", kAnywhere, kYes, TakePreset},
    {L"--save-preset", kAnywhere, kYes, TakeText<&Options::savePreset>, false},
    {L"--list-presets", kAnywhere, kNo, TakeTask<ProgramTask::kPresets>, false},
    {L"--last", kAnywhere, kNo, TakeSwitch<&Options::useLast>},
    {L"--dialog", kSingle | kInPlace, kNo, TakeSwitch<&Options::showDialog>},
    {L"--mask", kAnywhere, kYes, TakeText<&Options::mask>},
    {L"--roi", kAnywhere, kYes, TakeRoi},
    {L"--plugin", kAnywhere, kYes, TakeText<&Options::plugin>},
    {L"--filter", kAnywhere, kYes, TakeText<&Options::filter>},
    {L"--overwrite", kSingle, kNo, TakeSwitch<&Options::overwrites>},
    {L"--no-backup", kInPlace, kNo, TakeSwitch<&Options::keepsNoBackup>},
    {L"--quality", kAnywhere, kYes, TakeQuality},
    {L"--subsampling", kAnywhere, kYes, TakeSubsampling},
    {L"--compression", kAnywhere, kYes, TakeCompression},
    {L"--format", kSingle, kYes, TakeFormat},
    {L"--depth", kAnywhere, kYes, TakeDepth},
    {L"--metadata", kAnywhere, kYes, TakeMetadata},
    {L"--strict", kAnywhere, kNo, TakeSwitch<&Options::isStrict>},
    {L"--no-strict", kAnywhere, kNo, TakeSwitch<&Options::isStrict, false>},
    {L"--quiet", kAnywhere, kNo, TakeQuiet},
    {L"--silent", kAnywhere, kNo, TakeSilent},
    {L"--lights", kSingle, kNo, TakeSwitch<&Options::printLights>},
    {L"--lights-csv", kSingle, kYes, TakeText<&Options::lightsCsv>},
    {L"--lights-svg", kSingle, kYes, TakeText<&Options::lightsSvg>},
    {L"--debug-images", kSingle, kYes, TakeText<&Options::debugImages>},
    {L"--show-lights", kSingle, kNo, TakeSwitch<&Options::showLights>},
    {L"--show-debug", kSingle, kNo, TakeSwitch<&Options::showDebug>},
    {L"--contact-sheet", kSingle | kMany, kYes, TakeContactSheet, false},
    {L"--sheet-side", kMany, kYes, TakeSheetSide}, // a batch tells its workers
    {L"--about", kSingle, kNo, TakeTask<ProgramTask::kAbout>},
    {L"--help", kAnywhere, kNo, TakeTask<ProgramTask::kHelp>},
    {L"-h", kAnywhere, kNo, TakeTask<ProgramTask::kHelp>},
    {L"--version", kAnywhere, kNo, TakeTask<ProgramTask::kVersion>},
    {L"-V", kAnywhere, kNo, TakeTask<ProgramTask::kVersion>},
    {L"--out", kMany, kYes, TakeBatchText<&BatchOptions::outFolder>, false},
    {L"--name", kMany, kYes, TakeBatchText<&BatchOptions::namePattern>, false},
    {L"--recursive", kMany, kNo, TakeBatchSwitch<&BatchOptions::isRecursive>, false},
    {L"--include", kMany, kYes, AddBatchText<&BatchOptions::includes>, false},
    {L"--exclude", kMany, kYes, AddBatchText<&BatchOptions::excludes>, false},
    {L"--existing", kMany, kYes, TakeExisting, false},
    {L"--jobs", kMany, kYes, TakeBatchWhole<&BatchOptions::jobs, kMostJobs>, false},
    {L"--memory", kMany, kYes, TakeBatchWhole<&BatchOptions::memory, kMostMemory>, false},
    {L"--on-error", kMany, kYes, TakeOnError, false},
    {L"--timeout", kMany, kYes, TakeBatchWhole<&BatchOptions::timeout, kLongestTimeout>, false},
    {L"--resume", kMany, kNo, TakeBatchSwitch<&BatchOptions::resumes>, false},
    {L"--dry-run", kMany, kNo, TakeBatchSwitch<&BatchOptions::isDryRun>, false},
    {L"--json", kMany, ValueNeed::kJsonFile, TakeJson, false},
    {L"--progress", kMany, kYes, TakeProgress, false},
    {L"--failed", kMany, kYes, TakeBatchText<&BatchOptions::failedList>, false},
};

static const OptionRow *FindRow(const std::wstring &name) {
    const auto found = std::find_if(std::begin(kRows), std::end(kRows),
                                    [&](const OptionRow &row) { return name == row.name; });
    return found == std::end(kRows) ? nullptr : found;
}

static bool FailUnknown(const std::wstring &word, const std::wstring &name, std::string *why) {
    std::vector<std::wstring> names = ListParameterOptions();
    for (const OptionRow &row : kRows)
        names.push_back(row.name);
    const std::wstring nearest = NearestWord(name, names);
    return Fail(why, "unknown option " + ToUtf8(word) +
                         (nearest.empty() ? "" : "; did you mean " + ToUtf8(nearest) + "?"));
}

static unsigned CommandBit(ProgramTask command) {
    return command == ProgramTask::kBatch || command == ProgramTask::kWorker ? kMany
           : command == ProgramTask::kInPlace                                ? kInPlace
                                                                             : kSingle;
}

// A word that can only be the file: options have one of their own for it.
static bool IsJsonFile(const std::wstring &word) {
    return word == L"-" || word.ends_with(L".json") || word.ends_with(L".jsonl") ||
           word.ends_with(L".ndjson");
}

// A command line being read.
struct Reading {
    const std::vector<std::wstring> &arguments;
    size_t at;
    ProgramTask command; // how the options' places are judged
    Options options;
    std::vector<std::wstring> files;
    std::string *why;
};

static bool TakeValue(Reading *reading, ValueNeed need, size_t equals, GivenOption *given) {
    const std::vector<std::wstring> &arguments = reading->arguments;
    const bool hasNext = reading->at + 1 < arguments.size();
    if (equals != std::wstring::npos)
        given->value = arguments[reading->at].substr(equals + 1);
    else if (need == ValueNeed::kJsonFile && !(hasNext && IsJsonFile(arguments[reading->at + 1])))
        given->value = L"-";
    else if (hasNext)
        given->value = arguments[++reading->at];
    return !given->value.empty() || Fail(reading->why, ToUtf8(given->name) + " needs a value");
}

// One option; moves `at` to its last word. A value follows as the next word or behind "=".
static bool TakeOption(Reading *reading) {
    const size_t first = reading->at;
    const std::wstring word = reading->arguments[first];
    const size_t equals = word.find(L'=');
    GivenOption given{word.substr(0, equals), L"", reading->why};
    const OptionRow *row = FindRow(given.name);
    const bool isParameter = IsParameterOption(given.name);
    const ValueNeed need = row ? row->need : ValueNeed::kNeeded;
    if (!row && !isParameter)
        return FailUnknown(word, given.name, reading->why);
    if (need == ValueNeed::kNone && equals != std::wstring::npos)
        return Fail(reading->why, ToUtf8(given.name) + " takes no value");
    if (row && !(row->commands & CommandBit(reading->command)))
        return Fail(reading->why, ToUtf8(given.name) + " does not go with this command");
    if (need != ValueNeed::kNone && !TakeValue(reading, need, equals, &given))
        return false;
    if (!row || row->isOfPhoto)
        reading->options.photoWords.insert(
            reading->options.photoWords.end(), reading->arguments.begin() + static_cast<ptrdiff_t>(first),
            reading->arguments.begin() + static_cast<ptrdiff_t>(reading->at) + 1);
    if (row)
        return row->take(reading->options, given);
    DescriptorValue value;
    if (!ParseParameter(given.name, given.value, &value, reading->why))
        return false;
    reading->options.values.push_back(value);
    return true;
}

bool WantsDebugPictures(const Options &options) {
    return options.showDebug || !options.debugImages.empty();
}

bool WantsDiagnostics(const Options &options) {
    return options.printLights || options.showLights || !options.lightsCsv.empty() ||
           !options.lightsSvg.empty() || WantsDebugPictures(options);
}

bool IsStream(const std::wstring &file) {
    return file == L"-";
}

bool OpensWindows(const Options &options) {
    return options.showDialog || options.showLights || options.showDebug;
}

// What belongs to our own filter means nothing to another one.
static bool CheckFilter(const Options &options, std::string *why) {
    if (options.filter.empty())
        return true;
    if (!options.plugin.empty())
        return Fail(why, "--plugin and --filter exclude each other");
    if (WantsDiagnostics(options))
        return Fail(why, "the lights are those of the star filter; --filter runs another one");
    if (!options.contactSheet.empty())
        return Fail(why, "the sheet shows the effects of the star filter; --filter runs another one");
    if (!options.values.empty() || !options.settings.empty() || !options.preset.empty() || options.useLast)
        return Fail(why, "the parameters are those of the star filter; --filter runs another one");
    return true;
}

static bool CheckTogether(const Options &options, std::string *why) {
    if (!CheckFilter(options, why))
        return false;
    if (options.useLast && !options.settings.empty())
        return Fail(why, "--last and --settings exclude each other");
    if (!options.preset.empty() && (options.useLast || !options.settings.empty()))
        return Fail(why, "--preset, --settings and --last exclude each other");
    if (!options.lightsCsv.empty() && options.lightsCsv == options.lightsSvg)
        return Fail(why, "--lights-csv and --lights-svg name the same file");
    return true;
}

static bool TakeOneFile(Options *options, const std::vector<std::wstring> &files, std::string *why) {
    const bool tells = WantsDiagnostics(*options) || !options->contactSheet.empty();
    if (files.empty() && !options->savePreset.empty()) {
        options->task = ProgramTask::kPresets;
        return true;
    }
    if (files.empty())
        return Fail(why, tells ? "PHOTO is missing" : "PHOTO and OUT are missing");
    if (files.size() < 2 && !tells)
        return Fail(why, "OUT is missing");
    if (files.size() > 2)
        return Fail(why, "one PHOTO and one OUT, not also \"" + ToUtf8(files[2]) +
                             "\"; \"brillatrix batch\" takes many photos");
    if (files[0].empty() || files.back().empty())
        return Fail(why, files[0].empty() ? "PHOTO is empty" : "OUT is empty");
    options->photo = files[0];
    options->out = files.size() > 1 ? files[1] : L"";
    if (options->printLights && IsStream(options->out))
        return Fail(why, "--lights prints where OUT goes; --lights-csv writes a file");
    return true;
}

static bool TakeFiles(Options *options, const std::vector<std::wstring> &files, std::string *why) {
    switch (options->task) {
    case ProgramTask::kFilter:
        return TakeOneFile(options, files, why);
    case ProgramTask::kBatch:
        options->batch.inputs = files;
        return !files.empty() || Fail(why, "there is no INPUT: a file, a folder, a pattern, @LIST or -");
    case ProgramTask::kInPlace:
        options->photos = files;
        if (std::any_of(files.begin(), files.end(), IsStream))
            return Fail(why, "inplace replaces files, and - is none; brillatrix - - is a filter");
        return !files.empty() || Fail(why, "PHOTO is missing");
    default:
        return true;
    }
}

static const Choice<ProgramTask> kCommands[] = {{L"batch", ProgramTask::kBatch},
                                                {L"inplace", ProgramTask::kInPlace},
                                                {L"help", ProgramTask::kHelp},
                                                {L"worker", ProgramTask::kWorker}}; // a batch starts those

// The first word may be a command; the page of the help that belongs to it has its name.
static void TakeCommand(Reading *reading) {
    for (const Choice<ProgramTask> &command : kCommands)
        if (!reading->arguments.empty() && reading->arguments[0] == command.name) {
            reading->command = reading->options.task = command.value;
            reading->options.page = command.value == ProgramTask::kHelp ? "" : ToUtf8(command.name);
            reading->at = 1;
        }
}

bool ParseOptions(const std::vector<std::wstring> &arguments, Options *options, std::string *why) {
    Reading reading{arguments, 0, ProgramTask::kFilter, {}, {}, why};
    TakeCommand(&reading);
    bool onlyFiles = false;
    for (; reading.at < arguments.size(); reading.at++) {
        const std::wstring &word = arguments[reading.at];
        if (!onlyFiles && word == L"--")
            onlyFiles = true;
        else if (onlyFiles || word.size() < 2 || word[0] != L'-')
            reading.files.push_back(word);
        else if (!TakeOption(&reading))
            return false;
    }
    if (reading.command == ProgramTask::kHelp && !reading.files.empty())
        reading.options.page = ToUtf8(reading.files[0]);
    if (!CheckTogether(reading.options, why) || !TakeFiles(&reading.options, reading.files, why))
        return false;
    *options = std::move(reading.options);
    return true;
}

} // namespace host
