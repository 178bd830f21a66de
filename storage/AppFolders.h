// The folders in which the system keeps its files. Set once, on the first call into the module, on the host's
// thread; read-only afterwards. A folder that could not be obtained stays an empty string.
#pragma once

#include "diag/WidePath.h"

#include <cstddef>

constexpr size_t kMaxRelativePath = 260; // characters, terminator included, of a relative path

extern char gSettingsFolder[kMaxPath];
extern char gParametersFolder[kMaxPath];
extern char gLogFolder[kMaxPath];
extern char gCommonDataFolder[kMaxPath];
extern char gProductCommonFolder[kMaxPath];

// Fixes all folders and creates the per-user ones. True when every folder was obtained; goes on after a
// failure.
bool InitAppFolders(const char *shortName, const char *fullName);

bool GetUserDataFolder(const char *relativePath, char *path, size_t capacity);
bool MakeUserDataFolder(const char *path);
bool GetCommonDataFolder(const char *name, char *path, size_t capacity);
