// Paths in UTF-16. The folders come as ANSI strings, but a file in them may have any name, so files are
// opened by their wide paths and an ANSI string stands for one only when it says exactly the same.
#pragma once

#include "storage/AppFolders.h"

#include <cstddef>

struct WidePath {
    wchar_t text[kMaxPath];
};

// False, with *wide unchanged, when it does not fit.
bool WidenPath(const char *ansiPath, WidePath *wide);
// "folder\name" and "folder\name.extension". False, with *path unchanged, when it does not fit.
bool JoinPath(const wchar_t *folder, const wchar_t *name, WidePath *path);
bool JoinPath(const wchar_t *folder, const wchar_t *name, const wchar_t *extension, WidePath *path);

// The path in the system's code page without any loss; where the code page lacks a character, the short path
// of what must then exist. False, with the output unchanged, when neither is possible or it does not fit.
bool NarrowPathExactly(const wchar_t *path, char *ansiPath, size_t capacity);

// For messages only: a question mark stands for a character that the code page lacks.
struct PathText {
    char text[kMaxPath];
};
PathText DescribePath(const wchar_t *path);

// The part after the last separator.
const wchar_t *FileNameOf(const wchar_t *path);
// Whether the file lies directly in the folder, however each of them is spelt.
bool IsInFolder(const wchar_t *path, const wchar_t *folder);
