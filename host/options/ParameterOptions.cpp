#include "host/options/ParameterOptions.h"

#include "host/base/SystemText.h"
#include "host/options/Parameters.h"

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

static std::string NameOf(const ParameterInfo &parameter) {
    return std::string("--") + parameter.option;
}

static const ParameterInfo *FindOption(const std::wstring &name) {
    const auto found =
        std::find_if(std::begin(kParameters), std::end(kParameters),
                     [&](const ParameterInfo &parameter) { return ToUtf8(name) == NameOf(parameter); });
    return found == std::end(kParameters) ? nullptr : found;
}

static std::string Shown(const ParameterInfo &parameter, int16_t stored) {
    return std::to_string(static_cast<int32_t>(ShownValue(parameter, stored)));
}

static std::string Range(const ParameterInfo &parameter, const char *between) {
    return Shown(parameter, parameter.minimum) + between + Shown(parameter, parameter.maximum);
}

bool IsParameterOption(const std::wstring &name) {
    return FindOption(name) != nullptr;
}

bool ParseParameter(const std::wstring &name, const std::wstring &text, DescriptorValue *value,
                    std::string *why) {
    const ParameterInfo &parameter = *FindOption(name);
    const bool isCount = parameter.unit == ParameterUnit::kCount;
    double number = 0;
    int32_t whole = 0;
    if (isCount ? !ParseWhole(text, &whole) : !ParseNumber(text, &number))
        return Fail(why, NameOf(parameter) + " needs a " + (isCount ? "whole " : "") + "number " +
                             Range(parameter, "..") + ", not \"" + ToUtf8(text) + "\"");
    const double given = isCount ? whole : number;
    if (given < ShownValue(parameter, parameter.minimum) || given > ShownValue(parameter, parameter.maximum))
        return Fail(why, NameOf(parameter) + " goes from " + Range(parameter, " to ") + ", not \"" +
                             ToUtf8(text) + "\"");
    *value = DescribeParameter(parameter, given);
    return true;
}

std::vector<std::wstring> ListParameterOptions() {
    std::vector<std::wstring> names;
    for (const ParameterInfo &parameter : kParameters)
        names.push_back(FromUtf8(NameOf(parameter)));
    return names;
}

std::string HelpLine(std::string option, const std::string &text) {
    constexpr size_t kColumn = 25;
    option.resize(std::max(option.size() + 1, kColumn), ' ');
    return "  " + option + text + "\n";
}

std::string DescribeParameterOptions() {
    std::string lines =
        HelpLine("--effect NAME", ListEffects() + "; or efT0 .. efT" + std::to_string(kEffectTypeCount - 1));
    for (const ParameterInfo &parameter : kParameters)
        lines +=
            HelpLine(NameOf(parameter) + " " + Range(parameter, ".."),
                     std::string(parameter.help) + " (" + Shown(parameter, parameter.defaultValue) + ")");
    return lines;
}

} // namespace host
