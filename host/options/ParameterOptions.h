// The effect's numbers on the command line.
#pragma once

#include "host/services/Descriptor.h"

#include <string>
#include <vector>

namespace host {

// Plain decimal numbers only: no hexadecimal, no infinity.
bool ParseNumber(const std::wstring &text, double *number);
bool ParseWhole(const std::wstring &text, int32_t *number);

bool IsParameterOption(const std::wstring &name);
// The value that a script carries. False with the range for what is no number of it.
bool ParseParameter(const std::wstring &name, const std::wstring &text, DescriptorValue *value,
                    std::string *why);

std::vector<std::wstring> ListParameterOptions();
// Lines of the help: the effects, then the numbers with ranges and defaults.
std::string DescribeParameterOptions();
// A line of the help: the option in a column of its own.
std::string HelpLine(std::string option, const std::string &text);

} // namespace host
