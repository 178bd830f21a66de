// Photos replaced by their starred selves.
#pragma once

#include "host/program/PhotoRun.h"

#include <string>
#include <vector>

namespace host {

// All of session.options.photos, begun already. Each reason is given to `tell` when it happens. With the
// dialog, it opens on the first photo alone, and Cancel there ends it all. An exit status.
int RunInPlace(PhotoSession &session, const std::function<void(const PhotoOutcome &)> &tell);

// Whether the console was opened for the program alone, and closes with it.
bool HasOwnConsole();
// Whether the program was started by dropping files on it, or with a double click on one that it opens:
// nothing but the names of files, in a console of its own.
bool AreDroppedFiles(const std::vector<std::wstring> &arguments);

} // namespace host
