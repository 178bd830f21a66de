#include "diag/WidePath.h"

#include <cstring>
#include <cwchar>
#include <windows.h>

namespace {

constexpr size_t kShortPath = 240; // characters that every call of the system takes

// The user's folder when the code page lacks some of its characters; empty otherwise. Host's thread writes
// it, before anything else runs.
char gAnsiRoot[kMaxPath];
WidePath gWideRoot;

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

// Of a normal path, which has no other separators.
void CutSeparators(wchar_t *path) {
    size_t length = wcslen(path);
    while (length > 0 && path[length - 1] == L'\\')
        path[--length] = L'\0';
}

} // namespace

void RememberWideRoot(const char *ansiRoot, const wchar_t *root) {
    gAnsiRoot[0] = '\0';
    if (!ansiRoot || strlen(ansiRoot) >= sizeof gAnsiRoot || wcslen(root) >= kMaxPath)
        return;
    memcpy(gAnsiRoot, ansiRoot, strlen(ansiRoot) + 1);
    wcscpy(gWideRoot.text, root);
}

bool IsBelowWideRoot(const char *ansiPath) {
    const size_t length = strlen(gAnsiRoot);
    return length > 0 && strncmp(ansiPath, gAnsiRoot, length) == 0 &&
           (ansiPath[length] == '\\' || ansiPath[length] == '\0');
}

bool WidenPath(const char *ansiPath, WidePath *wide) {
    WidePath widened;
    size_t done = 0;
    if (IsBelowWideRoot(ansiPath)) {
        done = wcslen(gWideRoot.text);
        wmemcpy(widened.text, gWideRoot.text, done);
        ansiPath += strlen(gAnsiRoot);
    }
    if (MultiByteToWideChar(CP_ACP, 0, ansiPath, -1, widened.text + done,
                            static_cast<int>(kMaxPath - done)) <= 0)
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

WidePath SystemPath(const wchar_t *path) {
    WidePath full, formed = {};
    const DWORD length = wcslen(path) < kShortPath ? 0 : GetFullPathNameW(path, kMaxPath, full.text, nullptr);
    const bool isShare = length > 0 && wcsncmp(full.text, L"\\\\", 2) == 0;
    const bool hasForm = wcsncmp(path, L"\\\\?\\", 4) == 0;
    const wchar_t *prefix = isShare ? L"\\\\?\\UNC" : L"\\\\?\\";
    if (length == 0 || length + wcslen(prefix) >= kMaxPath || hasForm) {
        wcsncpy(formed.text, path, kMaxPath - 1);
        return formed;
    }
    wcscpy(formed.text, prefix);
    wcscat(formed.text, full.text + (isShare ? 1 : 0));
    return formed;
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

bool IsSamePath(const wchar_t *path, const wchar_t *other) {
    WidePath first, second;
    return NormalizePath(path, &first) && NormalizePath(other, &second) &&
           CompareStringOrdinal(first.text, -1, second.text, -1, TRUE) == CSTR_EQUAL;
}
