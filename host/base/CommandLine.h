// Command lines of other programs.
#pragma once

#include <string>
#include <vector>

namespace host {

// A command line that the system takes apart into the same words.
std::wstring JoinWords(const std::vector<std::wstring> &words);

} // namespace host
