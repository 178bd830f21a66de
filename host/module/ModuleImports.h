// Replaces functions that one loaded module imports, in that module's import table alone.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace host {

struct ImportHook {
    void **slot = nullptr;
    void *original = nullptr;
};

struct ImportHooks {
    std::vector<ImportHook> hooks;
};

// Points every import of `function` in `module`, whatever DLL it is from, to `replacement` and remembers the
// old pointers in *hooks. Returns the original, or null when the module does not import it.
void *ReplaceImport(HMODULE module, const char *function, void *replacement, ImportHooks *hooks);
template <typename Function>
Function ReplaceImport(HMODULE module, const char *function, Function replacement, ImportHooks *hooks) {
    return reinterpret_cast<Function>(
        ReplaceImport(module, function, reinterpret_cast<void *>(replacement), hooks));
}

// Puts all originals back, last replaced first. Call it before the module is unloaded.
void RestoreImports(ImportHooks *hooks);

// "DLL!function" of everything the module imports by name.
std::vector<std::string> ListImports(HMODULE module);

} // namespace host
