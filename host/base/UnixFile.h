// Files of the system under Wine, which keep permissions that no Windows program can see.
#pragma once

#include <string>

namespace host {

// Gives the temporary file the name `path`, and the permissions of the file `model`, which may be the one
// that it replaces. False: it has not happened in time, and no longer will once the temporary file is gone.
bool PutUnixFile(const std::wstring &temporary, const std::wstring &path, const std::wstring &model);

} // namespace host
