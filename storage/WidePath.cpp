#include "storage/WidePath.h"

#include <cstring>
#include <cwchar>
#include <windows.h>

namespace {

bool NarrowExactly(const wchar_t *path, char *ansiPath, size_t capacity) {
    char narrow[kMaxPath];
    BOOL lossy = FALSE;
    const bool isUtf8 = GetACP() == CP_UTF8; // which takes neither the flag nor the question
    const int size = WideCharToMultiByte(CP_ACP, isUtf8 ? 0 : WC_NO_BEST_FIT_CHARS, path, -1, narrow,
                                         sizeof narrow, nullptr, isUtf8 ? nullptr : &lossy);
    if (size <= 0 || lossy || static_cast<size_t>(size) > capacity)
        return false;
    memcpy(ansiPath, narrow, static_cast<size_t>(size));
    return true;
}

// The long form of what exists; otherwise the absolute path as it is.
bool NormalizePath(const wchar_t *path, WidePath *normal) {
    WidePath full;
    const DWORD length = GetFullPathNameW(path, kMaxPath, full.text, nullptr);
    if (length == 0 || length >= kMaxPath)
        return false;
    const DWORD longLength = GetLongPathNameW(full.text, normal->text, kMaxPath);
    if (longLength == 0 || longLength >= kMaxPath)
        *normal = full;
    return true;
}

void CutSeparators(wchar_t *path) {
    size_t length = wcslen(path);
    while (length > 0 && (path[length - 1] == L'\\' || path[length - 1] == L'/'))
        path[--length] = L'\0';
}

} // namespace

bool WidenPath(const char *ansiPath, WidePath *wide) {
    WidePath widened;
    if (MultiByteToWideChar(CP_ACP, 0, ansiPath, -1, widened.text, kMaxPath) <= 0)
        return false;
    *wide = widened;
    return true;
}

bool JoinPath(const wchar_t *folder, const wchar_t *name, WidePath *path) {
    if (wcslen(folder) + 1 + wcslen(name) >= kMaxPath)
        return false;
    WidePath joined;
    wcscpy(joined.text, folder);
    wcscat(joined.text, L"\\");
    wcscat(joined.text, name);
    *path = joined;
    return true;
}

bool JoinPath(const wchar_t *folder, const wchar_t *name, const wchar_t *extension, WidePath *path) {
    WidePath joined;
    if (!JoinPath(folder, name, &joined) || wcslen(joined.text) + 1 + wcslen(extension) >= kMaxPath)
        return false;
    wcscat(joined.text, L".");
    wcscat(joined.text, extension);
    *path = joined;
    return true;
}

bool NarrowPathExactly(const wchar_t *path, char *ansiPath, size_t capacity) {
    if (NarrowExactly(path, ansiPath, capacity))
        return true;
    WidePath shortPath;
    const DWORD length = GetShortPathNameW(path, shortPath.text, kMaxPath);
    return length > 0 && length < kMaxPath && NarrowExactly(shortPath.text, ansiPath, capacity);
}

PathText DescribePath(const wchar_t *path) {
    PathText description = {};
    if (WideCharToMultiByte(CP_ACP, 0, path, -1, description.text, sizeof description.text, nullptr,
                            nullptr) <= 0)
        description.text[0] = '\0';
    return description;
}

const wchar_t *FileNameOf(const wchar_t *path) {
    const wchar_t *name = path;
    for (const wchar_t *p = path; *p; ++p)
        if (*p == L'\\' || *p == L'/' || *p == L':')
            name = p + 1;
    return name;
}

bool IsInFolder(const wchar_t *path, const wchar_t *folder) {
    WidePath file, parent;
    if (!NormalizePath(path, &file) || !NormalizePath(folder, &parent))
        return false;
    file.text[FileNameOf(file.text) - file.text] = L'\0';
    CutSeparators(file.text);
    CutSeparators(parent.text);
    return CompareStringOrdinal(file.text, -1, parent.text, -1, TRUE) == CSTR_EQUAL;
}
