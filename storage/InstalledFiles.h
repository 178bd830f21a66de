// What comes with the plug-in besides itself: the guide and parameter sets.
#pragma once

#include "diag/WidePath.h"

// A file or folder, by its path in the package: beside the module, or where the installer put the rest.
// False, with *path unchanged, when it is at neither place. Any thread.
bool FindInstalledFile(const wchar_t *name, WidePath *path);

// Copies the sets that came with the plug-in into a folder that was just made. What is there stays. Without
// such sets nothing happens.
void CopyInstalledSets(const char *folder);
