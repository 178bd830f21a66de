// Where the program runs, and whether anybody could see a window there.
#pragma once

#include <string>

namespace host {

bool IsUnderWine();

// False with a reason when a window that waits for a person would wait for ever: in a service's session, or
// under Wine without a screen. The environment variable BRILLATRIX_WINDOWS=1 says that there is somebody all
// the same.
bool HasDisplay(std::string *why);

} // namespace host
