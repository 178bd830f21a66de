// Guesses at what was meant.
#pragma once

#include <string>
#include <vector>

namespace host {

// The word that is nearest to `typed`; empty when none is near.
std::wstring NearestWord(const std::wstring &typed, const std::vector<std::wstring> &words);

} // namespace host
