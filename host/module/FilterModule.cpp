#include "host/module/FilterModule.h"

#include "host/base/FileBytes.h"
#include "host/base/SystemText.h"

namespace host {

bool ReadModuleResource(HMODULE module, const wchar_t *type, uint16_t id, std::vector<uint8_t> *bytes) {
    const HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(id), type);
    const HGLOBAL loaded = resource ? LoadResource(module, resource) : nullptr;
    const void *data = loaded ? LockResource(loaded) : nullptr;
    if (!data)
        return false;
    const uint8_t *first = static_cast<const uint8_t *>(data);
    bytes->assign(first, first + SizeofResource(module, resource));
    return true;
}

static BOOL CALLBACK TakeFirstName(HMODULE, LPCWSTR, LPWSTR name, LONG_PTR parameter) {
    *reinterpret_cast<uint16_t *>(parameter) = IS_INTRESOURCE(name) ? LOWORD(name) : 0;
    return FALSE;
}

constexpr uint16_t kMachine32 = 0x014C, kMachine64 = 0x8664;
constexpr uint64_t kHeaderReach = 1u << 16; // of a module's file its header lies in

// The machine that the file's code is made for; 0 when it is no module.
static uint16_t MachineOf(const Bytes &file) {
    constexpr size_t kHeaderPlace = 60;
    constexpr uint32_t kHeaderMark = 0x00004550; // "PE"
    if (file.size() < kHeaderPlace + 4 || file[0] != 'M' || file[1] != 'Z')
        return 0;
    const uint32_t at = NumberAt<uint32_t>(file.data() + kHeaderPlace);
    if (at > file.size() - 6 || NumberAt<uint32_t>(file.data() + at) != kHeaderMark)
        return 0;
    return NumberAt<uint16_t>(file.data() + at + 4);
}

static bool CheckMachine(const std::wstring &path, std::string *why) {
    Bytes file;
    if (!ReadFileStart(path, kHeaderReach, &file, why))
        return false;
    const uint16_t machine = MachineOf(file);
    if (machine == kMachine64)
        return true;
    return Fail(why, machine == 0            ? "it is not a module"
                     : machine == kMachine32 ? "it is a 32-bit module; only 64-bit ones run here"
                                             : "it is made for another kind of processor");
}

// No code of the file runs for this.
static bool ReadPropertyList(const std::wstring &path, Pipl *pipl, std::string *why) {
    const HMODULE file = LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    if (!file) {
        *why = SystemErrorText(GetLastError());
        return false;
    }
    uint16_t id = 0;
    std::vector<uint8_t> bytes;
    EnumResourceNamesW(file, L"PIPL", TakeFirstName, reinterpret_cast<LONG_PTR>(&id));
    const bool found = id != 0 && ReadModuleResource(file, L"PIPL", id, &bytes);
    FreeLibrary(file);
    if (!found) {
        *why = "it has no property list";
        return false;
    }
    return ParsePipl(bytes.data(), bytes.size(), pipl, why);
}

bool LoadFilterModule(const std::wstring &path, FilterModule *module, std::string *why) {
    FilterModule loaded;
    if (!CheckMachine(path, why))
        return false;
    if (!ReadPropertyList(path, &loaded.pipl, why))
        return false;
    loaded.module = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (!loaded.module) {
        const DWORD error = GetLastError();
        *why = error == ERROR_BAD_EXE_FORMAT ? "it is not a 64-bit module" : SystemErrorText(error);
        return false;
    }
    void *entry = reinterpret_cast<void *>(GetProcAddress(loaded.module, loaded.pipl.entryName64.c_str()));
    loaded.entry = reinterpret_cast<FilterEntry>(entry);
    if (!loaded.entry) {
        *why = "it does not export its entry point " + loaded.pipl.entryName64;
        FreeLibrary(loaded.module);
        return false;
    }
    *module = std::move(loaded);
    return true;
}

void UnloadFilterModule(FilterModule *module) {
    if (module->module)
        FreeLibrary(module->module);
    *module = {};
}

} // namespace host
