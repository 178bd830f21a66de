#include "host/options/Presets.h"

#include "host/base/FileBytes.h"
#include "host/base/SystemText.h"
#include "host/options/Parameters.h"

#include <shlobj.h>

#include <set>

namespace host {

constexpr wchar_t kEnding[] = L".sss";

// The filter's own folder.
static std::wstring PresetFolder() {
    wchar_t folder[MAX_PATH] = {};
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder)))
        return {};
    return std::wstring(folder) + L"\\Nexorvanta\\Brillatrix\\Parameters";
}

// The sets that come with the program lie beside it, or where the environment says.
static std::wstring ShippedFolder() {
    wchar_t folder[MAX_PATH] = {};
    const DWORD length = GetEnvironmentVariableW(L"BRILLATRIX_PRESETS", folder, MAX_PATH);
    if (length > 0 && length < MAX_PATH)
        return NativePath(folder);
    GetModuleFileNameW(nullptr, folder, MAX_PATH);
    const std::wstring program = folder;
    return program.substr(0, program.find_last_of(L'\\') + 1) + L"presets";
}

static std::wstring PathIn(const std::wstring &folder, const std::wstring &name) {
    return folder.empty() ? L"" : folder + L"\\" + name + kEnding;
}

std::wstring PresetPath(const std::wstring &name) {
    const std::wstring own = PathIn(PresetFolder(), name), shipped = PathIn(ShippedFolder(), name);
    return !DoesFileExist(own) && DoesFileExist(shipped) ? shipped : own;
}

static void FindPresets(const std::wstring &folder, std::set<std::wstring> *names) {
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW(PathIn(folder, L"*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return;
    do {
        const std::wstring name = found.cFileName;
        if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
            names->insert(name.substr(0, name.find_last_of(L'.')));
    } while (FindNextFileW(search, &found));
    FindClose(search);
}

std::vector<std::wstring> ListPresets() {
    std::set<std::wstring> names;
    for (const std::wstring &folder : {PresetFolder(), ShippedFolder()})
        FindPresets(folder, &names);
    return {names.begin(), names.end()};
}

bool SavePreset(const std::wstring &name, const Descriptor &parameters, bool overwrites,
                const std::string &advice, std::string *why) {
    if (name.empty() || name.find_first_of(L"\\/:*?\"<>|") != std::wstring::npos)
        return Fail(why, "a preset's name is that of a file, without \\ / : * ? \" < > |");
    const std::wstring path = PathIn(PresetFolder(), name);
    if (path.empty())
        return Fail(why, "there is no folder for it");
    if (!overwrites && GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES)
        return Fail(why, "it exists already; " + advice);
    const int made = SHCreateDirectoryExW(nullptr, PresetFolder().c_str(), nullptr);
    if (made != ERROR_SUCCESS && made != ERROR_ALREADY_EXISTS && made != ERROR_FILE_EXISTS)
        return Fail(why, SystemErrorText(static_cast<uint32_t>(made)));
    return WriteWholeFile(path, SettingsFileBytes(parameters), why);
}

} // namespace host
