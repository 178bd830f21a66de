// Paths in UTF-16. The folders come as ANSI strings, but they and the files in them may have any name, so
// files are opened by their wide paths.
#pragma once

#include <cstddef>

constexpr size_t kMaxPath = 1000; // characters, terminator included, of a full path

struct WidePath {
    wchar_t text[kMaxPath];
};

// The wide path that an ANSI one stands for. False, with *wide unchanged, when it does not fit.
bool WidenPath(const char *ansiPath, WidePath *wide);
// Where the code page lacks characters of the user's folder, its ANSI name has question marks, which no path
// has otherwise: WidenPath puts `root` in the place of `ansiRoot` from now on. One root at a time; null:
// none.
void RememberWideRoot(const char *ansiRoot, const wchar_t *root);
// Whether the ANSI path begins with that root, so that only its wide form can be used.
bool IsBelowWideRoot(const char *ansiPath);

// "folder\name" and "folder\name.extension". False, with *path unchanged, when it does not fit.
bool JoinPath(const wchar_t *folder, const wchar_t *name, WidePath *path);
bool JoinPath(const wchar_t *folder, const wchar_t *name, const wchar_t *extension, WidePath *path);

// The path for the system's calls, which take a long one only in a form of its own.
WidePath SystemPath(const wchar_t *path);

// For messages only: a question mark stands for a character that the code page lacks.
struct PathText {
    char text[kMaxPath];
};
PathText DescribePath(const wchar_t *path);

// The part after the last separator.
const wchar_t *FileNameOf(const wchar_t *path);
// Whether the file lies directly in the folder, and whether both paths name one file, however each is spelt.
bool IsInFolder(const wchar_t *path, const wchar_t *folder);
bool IsSamePath(const wchar_t *path, const wchar_t *other);
