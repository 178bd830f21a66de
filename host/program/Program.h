// The program: its commands.
#pragma once

#include <string>
#include <vector>

namespace host {

// Arguments without the program's name. An exit status; everything is said on the console.
int RunProgram(const std::vector<std::wstring> &arguments);

} // namespace host
