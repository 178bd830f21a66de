#include "storage/InstalledFiles.h"

#include "diag/module/ModuleInstance.h"
#include "storage/FoundFiles.h"

#include <cwchar>
#include <windows.h>

namespace {

constexpr wchar_t kInstallKey[] = L"Software\\Nexorvanta\\Brillatrix", kInstallValue[] = L"InstallFolder";

bool IsThere(const wchar_t *path) {
    return GetFileAttributesW(SystemPath(path).text) != INVALID_FILE_ATTRIBUTES;
}

bool ModuleFolder(WidePath *folder) {
    // cppcheck-suppress ctuuninitvar  ; it is filled here
    const DWORD length = GetModuleFileNameW(ModuleInstance(), folder->text, kMaxPath);
    if (length == 0 || length >= kMaxPath)
        return false;
    *wcsrchr(folder->text, L'\\') = L'\0';
    return true;
}

// An installation of the user's own goes before one for all.
bool InstallFolder(HKEY root, WidePath *folder) {
    DWORD size = sizeof folder->text;
    return RegGetValueW(root, kInstallKey, kInstallValue, RRF_RT_REG_SZ, nullptr, folder->text, &size) ==
           ERROR_SUCCESS;
}

bool FindIn(const WidePath &folder, const wchar_t *name, WidePath *path) {
    WidePath found;
    if (!JoinPath(folder.text, name, &found) || !IsThere(found.text))
        return false;
    *path = found;
    return true;
}

void CopySet(const wchar_t *from, const wchar_t *folder, const wchar_t *name) {
    WidePath source, target;
    if (JoinPath(from, name, &source) && JoinPath(folder, name, &target))
        CopyFileW(SystemPath(source.text).text, SystemPath(target.text).text, TRUE);
}

} // namespace

bool FindInstalledFile(const wchar_t *name, WidePath *path) {
    WidePath folder;
    return (ModuleFolder(&folder) && FindIn(folder, name, path)) ||
           (InstallFolder(HKEY_CURRENT_USER, &folder) && FindIn(folder, name, path)) ||
           (InstallFolder(HKEY_LOCAL_MACHINE, &folder) && FindIn(folder, name, path));
}

void CopyInstalledSets(const char *folder) {
    WidePath from, to, pattern;
    if (!FindInstalledFile(L"presets", &from) || !WidenPath(folder, &to) ||
        !JoinPath(from.text, L"*.sss", &pattern))
        return;
    TakeFoundFiles(pattern.text,
                   [&](const WIN32_FIND_DATAW &found) { CopySet(from.text, to.text, found.cFileName); });
}
