#include "host/program/ParameterOptions.h"

#include "host/base/SystemText.h"
#include "plugin/interface/ScriptKeys.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace host {

constexpr double kLargestValue = 1e6; // of a number on the command line, either sign

bool ParseNumber(const std::wstring &text, double *number) {
    if (text.empty() || text.find_first_not_of(L"0123456789+-.eE") != std::wstring::npos)
        return false;
    wchar_t *end = nullptr;
    const double parsed = std::wcstod(text.c_str(), &end);
    if (*end != 0 || !std::isfinite(parsed) || std::fabs(parsed) > kLargestValue)
        return false;
    *number = parsed;
    return true;
}

bool ParseWhole(const std::wstring &text, int32_t *number) {
    double parsed;
    if (!ParseNumber(text, &parsed) || parsed != std::floor(parsed))
        return false;
    *number = static_cast<int32_t>(parsed);
    return true;
}

struct NumberOption {
    const char *name;
    uint32_t key;
    int32_t least, most, usual;
    const char *help;
};

static const NumberOption kNumberOptions[] = {
    {"--threshold", kKeyThreshold, 0, 100, 50, "how many lights get stars, by brightness"},
    {"--intensity", kKeyIntensity, 0, 100, 50, "brightness of the stars"},
    {"--length", kKeyLength, 0, 100, 50, "length of the spikes"},
    {"--angle", kKeyAngle, -90, 90, 15, "turn of the stars, in degrees"},
    {"--points", kKeyNumberOfPoints, 1, 32, 6, "number of spikes"},
    {"--sharpness", kKeySpikeSharpness, 0, 100, 50, "sharpness of the spikes"},
    {"--saturation", kKeySaturation, -100, 100, 30, "colour of the stars"},
    {"--rainbow", kKeyRainbowIntensity, 0, 100, 50, "rainbow along the spikes"},
    {"--rainbow-frequency", kKeyRainbowFrequency, 0, 100, 50, "how often its colours repeat"},
    {"--secondary", kKeySecondaryIntensity, 0, 100, 15, "brightness of the small spikes between"},
    {"--flare", kKeySoftFlareBrightness, 0, 100, 30, "brightness of the soft glow"},
};

static const NumberOption *FindOption(const std::wstring &name) {
    const auto found = std::find_if(std::begin(kNumberOptions), std::end(kNumberOptions),
                                    [&](const NumberOption &option) { return ToUtf8(name) == option.name; });
    return found == std::end(kNumberOptions) ? nullptr : found;
}

static std::string Range(const NumberOption &option) {
    return std::to_string(option.least) + ".." + std::to_string(option.most);
}

bool IsParameterOption(const std::wstring &name) {
    return FindOption(name) != nullptr;
}

bool ParseParameter(const std::wstring &name, const std::wstring &text, DescriptorValue *value,
                    std::string *why) {
    const NumberOption &option = *FindOption(name);
    const bool isCount = option.key == kKeyNumberOfPoints;
    double number = 0;
    int32_t whole = 0;
    if (isCount ? !ParseWhole(text, &whole) : !ParseNumber(text, &number))
        return Fail(why, std::string(option.name) + " needs a " + (isCount ? "whole " : "") + "number " +
                             Range(option) + ", not \"" + ToUtf8(text) + "\"");
    const double given = isCount ? whole : number;
    if (given < option.least || given > option.most)
        return Fail(why, std::string(option.name) + " goes from " + std::to_string(option.least) + " to " +
                             std::to_string(option.most) + ", not \"" + ToUtf8(text) + "\"");
    const uint32_t unit = option.key == kKeyAngle ? kUnitAngle : kUnitPercent;
    *value = isCount ? IntegerValue(option.key, whole) : UnitFloatValue(option.key, unit, number);
    return true;
}

std::vector<std::wstring> ListParameterOptions() {
    std::vector<std::wstring> names;
    for (const NumberOption &option : kNumberOptions)
        names.push_back(FromUtf8(option.name));
    return names;
}

std::string HelpLine(std::string option, const std::string &text) {
    constexpr size_t kColumn = 25;
    option.resize(std::max(option.size() + 1, kColumn), ' ');
    return "  " + option + text + "\n";
}

std::string DescribeParameterOptions() {
    std::string lines;
    for (const NumberOption &option : kNumberOptions)
        lines += HelpLine(std::string(option.name) + " " + Range(option),
                          std::string(option.help) + " (" + std::to_string(option.usual) + ")");
    return lines;
}

} // namespace host
