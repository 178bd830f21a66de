// What the program tells about its use.
#pragma once

#include <string>

namespace host {

// A page: "" for the first, "batch", "inplace". Empty for another name.
std::string HelpText(const std::string &page);

} // namespace host
