#include "host/program/Options.h"

#include "host/base/SystemText.h"
#include "host/program/Parameters.h"
#include "plugin/interface/ScriptKeys.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace host {

constexpr double kLargestValue = 1e6; // of a number on the command line, either sign

const char kHelpText[] =
    "Usage: brillatrix [options] PHOTO OUT\n"
    "       brillatrix --lights ... PHOTO\n"
    "Adds stars to the lights of PHOTO and writes the result to OUT.\n"
    "\n"
    "Reads png, jpg, tif, bmp, ppm, pgm, pfm; writes by OUT's ending at the photo's own depth.\n"
    "\n"
    "What is not given is the default, so that a command always means the same picture:\n"
    "  --effect NAME            standard, hollywood, cross, hyper, north, vector, burst; or efT0 .. efT6\n"
    "  --threshold N            how many lights get stars, by brightness (50)\n"
    "  --intensity N            brightness of the stars (50)\n"
    "  --length N               length of the spikes (50)\n"
    "  --angle DEGREES          turn of the stars (15)\n"
    "  --points N               number of spikes (6)\n"
    "  --sharpness N            sharpness of the spikes (50)\n"
    "  --saturation N           colour of the stars (30)\n"
    "  --rainbow N              rainbow along the spikes (50)\n"
    "  --rainbow-frequency N    how often its colours repeat (50)\n"
    "  --secondary N            brightness of the small spikes between (15)\n"
    "  --flare N                brightness of the soft glow (30)\n"
    "  --effects-only           the stars alone, on black\n"
    "  --settings FILE.sss      all parameters from a saved set; options given here go before it\n"
    "  --last                   all parameters of the last run instead of the defaults\n"
    "\n"
    "  --dialog                 choose the parameters in the filter's dialog; Cancel writes nothing\n"
    "  --mask IMAGE             only lights where IMAGE is white; of the photo's size\n"
    "  --roi LEFT,TOP,RIGHT,BOTTOM\n"
    "                           filter this rectangle alone; right and bottom are exclusive\n"
    "  --plugin FILE            the filter module (BrillatrixX64.8bf beside this program)\n"
    "  --filter FILE.8bf        run another 64-bit filter with its own default parameters; with --dialog "
    "its\n"
    "                           windows open, without they are answered with OK; --about tells its name\n"
    "  --quiet                  errors only, no progress bar and no notes\n"
    "\n"
    "What the filter found; OUT may then be left out:\n"
    "  --lights                 print the table of the lights, brightest first\n"
    "  --lights-csv FILE        write it with positions, diameters, colours, ranks and states\n"
    "  --lights-svg FILE        draw it, of the photo's size, to be laid over the photo\n"
    "  --debug-images DIR       write four pictures: analysis, selection, lights and star .png\n"
    "  --show-lights            open the table in a window\n"
    "  --show-debug             open the pictures in a window\n"
    "\n"
    "  --about                  what the filter module says about itself\n"
    "  --help, --version\n"
    "\n"
    "Exit status: 0 done, 2 wrong usage, 3 a file could not be read or written,\n"
    "4 the plug-in reported an error, 5 cancelled, 6 there is no screen for a window.\n";

// Plain decimal numbers only: no hexadecimal, no infinity.
static bool ParseNumber(const std::wstring &text, double *number) {
    if (text.empty() || text.find_first_not_of(L"0123456789+-.eE") != std::wstring::npos)
        return false;
    wchar_t *end = nullptr;
    const double parsed = std::wcstod(text.c_str(), &end);
    if (*end != 0 || !std::isfinite(parsed) || std::fabs(parsed) > kLargestValue)
        return false;
    *number = parsed;
    return true;
}

static bool ParseWhole(const std::wstring &text, int32_t *number) {
    double parsed;
    if (!ParseNumber(text, &parsed) || parsed != std::floor(parsed))
        return false;
    *number = static_cast<int32_t>(parsed);
    return true;
}

static bool ParseRectangle(const std::wstring &text, Rectangle *rectangle) {
    int32_t edges[4];
    size_t at = 0;
    for (int i = 0; i < 4; i++) {
        const size_t comma = text.find(L',', at);
        if ((comma == std::wstring::npos) != (i == 3) || !ParseWhole(text.substr(at, comma - at), &edges[i]))
            return false;
        at = comma + 1;
    }
    *rectangle = {edges[0], edges[1], edges[2], edges[3]};
    return !IsEmpty(*rectangle);
}

struct NumberOption {
    const wchar_t *name;
    uint32_t key;
};

static const NumberOption kPercentOptions[] = {
    {L"--threshold", kKeyThreshold},
    {L"--intensity", kKeyIntensity},
    {L"--length", kKeyLength},
    {L"--sharpness", kKeySpikeSharpness},
    {L"--saturation", kKeySaturation},
    {L"--rainbow", kKeyRainbowIntensity},
    {L"--rainbow-frequency", kKeyRainbowFrequency},
    {L"--secondary", kKeySecondaryIntensity},
    {L"--flare", kKeySoftFlareBrightness},
};

static const NumberOption *FindPercentOption(const std::wstring &name) {
    const auto found = std::find_if(std::begin(kPercentOptions), std::end(kPercentOptions),
                                    [&](const NumberOption &option) { return name == option.name; });
    return found == std::end(kPercentOptions) ? nullptr : found;
}

static bool TakeNumberOption(const std::wstring &name, const std::wstring &text, Options *options,
                             std::string *why) {
    double number;
    int32_t whole;
    if (name == L"--points") {
        if (!ParseWhole(text, &whole))
            return Fail(why, "--points needs a whole number, not \"" + ToUtf8(text) + "\"");
        options->values.push_back(IntegerValue(kKeyNumberOfPoints, whole));
        return true;
    }
    if (!ParseNumber(text, &number))
        return Fail(why, ToUtf8(name) + " needs a number, not \"" + ToUtf8(text) + "\"");
    if (name == L"--angle")
        options->values.push_back(UnitFloatValue(kKeyAngle, kUnitAngle, number));
    else
        options->values.push_back(UnitFloatValue(FindPercentOption(name)->key, kUnitPercent, number));
    return true;
}

static bool TakeOtherOption(const std::wstring &name, const std::wstring &text, Options *options,
                            std::string *why) {
    if (text.empty())
        return Fail(why, ToUtf8(name) + " needs a value");
    if (name == L"--effect") {
        uint32_t code;
        if (!FindEffect(ToUtf8(text), &code))
            return Fail(why,
                        "there is no effect \"" + ToUtf8(text) +
                            "\"; the effects are standard, hollywood, cross, hyper, north, vector, burst");
        options->values.push_back(EnumeratedValue(kKeyEffect, kTypeEffect, code));
    } else if (name == L"--roi") {
        Rectangle rectangle;
        if (!ParseRectangle(text, &rectangle))
            return Fail(why, "--roi needs LEFT,TOP,RIGHT,BOTTOM with something inside, not \"" +
                                 ToUtf8(text) + "\"");
        options->roi = rectangle;
    } else if (name == L"--settings") {
        options->settings = text;
    } else if (name == L"--mask") {
        options->mask = text;
    } else if (name == L"--filter") {
        options->filter = text;
    } else if (name == L"--lights-csv") {
        options->lightsCsv = text;
    } else if (name == L"--lights-svg") {
        options->lightsSvg = text;
    } else if (name == L"--debug-images") {
        options->debugImages = text;
    } else {
        options->plugin = text;
    }
    return true;
}

struct SwitchOption {
    const wchar_t *name;
    bool Options::*value;
};

static const SwitchOption kSwitchOptions[] = {
    {L"--last", &Options::useLast},           {L"--quiet", &Options::isQuiet},
    {L"--dialog", &Options::showDialog},      {L"--lights", &Options::printLights},
    {L"--show-lights", &Options::showLights}, {L"--show-debug", &Options::showDebug},
};

static bool TakeFlag(const std::wstring &name, Options *options) {
    for (const SwitchOption &option : kSwitchOptions)
        if (name == option.name) {
            options->*option.value = true;
            return true;
        }
    if (name == L"--effects-only")
        options->values.push_back(BooleanValue(kKeyOutputSpikesOnly, true));
    else if (name == L"--about")
        options->task = ProgramTask::kAbout;
    else if (name == L"--help")
        options->task = ProgramTask::kHelp;
    else if (name == L"--version")
        options->task = ProgramTask::kVersion;
    else
        return false;
    return true;
}

static bool IsValueOption(const std::wstring &name) {
    static const wchar_t *const kOthers[] = {L"--effect",     L"--roi",        L"--settings",
                                             L"--mask",       L"--plugin",     L"--filter",
                                             L"--lights-csv", L"--lights-svg", L"--debug-images"};
    return std::find(std::begin(kOthers), std::end(kOthers), name) != std::end(kOthers);
}

static bool IsNumberOption(const std::wstring &name) {
    return name == L"--angle" || name == L"--points" || FindPercentOption(name) != nullptr;
}

// One option at arguments[*at]; moves *at to its last word. A value follows as the next word or behind "=".
static bool TakeOption(const std::vector<std::wstring> &arguments, size_t *at, Options *options,
                       std::string *why) {
    const std::wstring &word = arguments[*at];
    const size_t equals = word.find(L'=');
    const std::wstring name = word.substr(0, equals);
    if (!IsNumberOption(name) && !IsValueOption(name)) {
        if (equals == std::wstring::npos && TakeFlag(name, options))
            return true;
        return Fail(why, "unknown option " + ToUtf8(word));
    }
    std::wstring value;
    if (equals != std::wstring::npos)
        value = word.substr(equals + 1);
    else if (*at + 1 < arguments.size())
        value = arguments[++*at];
    else
        return Fail(why, ToUtf8(name) + " needs a value");
    return IsNumberOption(name) ? TakeNumberOption(name, value, options, why)
                                : TakeOtherOption(name, value, options, why);
}

bool WantsDebugPictures(const Options &options) {
    return options.showDebug || !options.debugImages.empty();
}

bool WantsDiagnostics(const Options &options) {
    return options.printLights || options.showLights || !options.lightsCsv.empty() ||
           !options.lightsSvg.empty() || WantsDebugPictures(options);
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
    if (!options.values.empty() || !options.settings.empty() || options.useLast)
        return Fail(why, "the parameters are those of the star filter; --filter runs another one");
    return true;
}

static bool CheckTogether(const Options &options, const std::vector<std::wstring> &files, std::string *why) {
    if (!CheckFilter(options, why))
        return false;
    if (options.task != ProgramTask::kFilter)
        return true;
    if (files.empty())
        return Fail(why, WantsDiagnostics(options) ? "PHOTO is missing" : "PHOTO and OUT are missing");
    if (files.size() < 2 && !WantsDiagnostics(options))
        return Fail(why, "OUT is missing");
    if (files.size() > 2)
        return Fail(why, "one PHOTO and one OUT, not also \"" + ToUtf8(files[2]) + "\"");
    if (options.useLast && !options.settings.empty())
        return Fail(why, "--last and --settings exclude each other");
    if (!options.lightsCsv.empty() && options.lightsCsv == options.lightsSvg)
        return Fail(why, "--lights-csv and --lights-svg name the same file");
    return true;
}

bool ParseOptions(const std::vector<std::wstring> &arguments, Options *options, std::string *why) {
    Options parsed;
    std::vector<std::wstring> files;
    bool onlyFiles = false;
    for (size_t at = 0; at < arguments.size(); at++) {
        if (!onlyFiles && arguments[at] == L"--")
            onlyFiles = true;
        else if (onlyFiles || arguments[at].size() < 2 || arguments[at][0] != L'-')
            files.push_back(arguments[at]);
        else if (!TakeOption(arguments, &at, &parsed, why))
            return false;
    }
    if (!CheckTogether(parsed, files, why))
        return false;
    if (parsed.task == ProgramTask::kFilter) {
        parsed.photo = files[0];
        parsed.out = files.size() > 1 ? files[1] : L"";
    }
    *options = std::move(parsed);
    return true;
}

} // namespace host
