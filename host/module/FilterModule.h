// A filter module (.8bf) in memory, and its resources.
#pragma once

#include "host/module/PiPL.h"

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace host {

using FilterEntry = void (*)(int16_t selector, void *record, intptr_t *data, int16_t *result);

struct FilterModule {
    HMODULE module = nullptr;
    FilterEntry entry = nullptr;
    Pipl pipl;
};

// Reads the property list with the file mapped as data, checks it, then loads the module and finds its entry.
// False with a reason in *why.
bool LoadFilterModule(const std::wstring &path, FilterModule *module, std::string *why);
void UnloadFilterModule(FilterModule *module);

// The bytes of a resource of a loaded module (or one mapped as data). False when there is none.
bool ReadModuleResource(HMODULE module, const wchar_t *type, uint16_t id, std::vector<uint8_t> *bytes);

} // namespace host
