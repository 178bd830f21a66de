// Saved sets of parameters, which the filter's dialog lists too.
#pragma once

#include "host/services/Descriptor.h"

#include <string>
#include <vector>

namespace host {

// The file of a set: the user's own before one that came with the program, there or not. Empty when the
// system has no folder for it.
std::wstring PresetPath(const std::wstring &name);
// Sorted names of both.
std::vector<std::wstring> ListPresets();
// False with a reason, for a name that no file can have and when there is one already; the advice says what
// to do about that one.
bool SavePreset(const std::wstring &name, const Descriptor &parameters, bool overwrites,
                const std::string &advice, std::string *why);

} // namespace host
