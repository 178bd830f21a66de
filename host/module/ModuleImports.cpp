#include "host/module/ModuleImports.h"

namespace host {

static const IMAGE_IMPORT_DESCRIPTOR *ImportTable(HMODULE module) {
    const uint8_t *base = reinterpret_cast<const uint8_t *>(module);
    const auto *dos = reinterpret_cast<const IMAGE_DOS_HEADER *>(base);
    const auto *headers = reinterpret_cast<const IMAGE_NT_HEADERS64 *>(base + dos->e_lfanew);
    const IMAGE_DATA_DIRECTORY &directory =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (directory.Size == 0)
        return nullptr;
    return reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR *>(base + directory.VirtualAddress);
}

// Calls visit(dll, function, slot) for everything imported by name.
template <typename Visit> static void VisitImports(HMODULE module, Visit visit) {
    uint8_t *base = reinterpret_cast<uint8_t *>(module);
    const IMAGE_IMPORT_DESCRIPTOR *import = ImportTable(module);
    for (; import && import->Name; import++) {
        const char *dll = reinterpret_cast<const char *>(base + import->Name);
        // Without the table of names, the addresses alone do not tell what they are.
        if (import->OriginalFirstThunk == 0)
            continue;
        const auto *name = reinterpret_cast<const IMAGE_THUNK_DATA64 *>(base + import->OriginalFirstThunk);
        auto *address = reinterpret_cast<IMAGE_THUNK_DATA64 *>(base + import->FirstThunk);
        for (; name->u1.AddressOfData; name++, address++) {
            if (IMAGE_SNAP_BY_ORDINAL64(name->u1.Ordinal))
                continue;
            const auto *entry = reinterpret_cast<const IMAGE_IMPORT_BY_NAME *>(base + name->u1.AddressOfData);
            visit(dll, reinterpret_cast<const char *>(entry->Name),
                  reinterpret_cast<void **>(&address->u1.Function));
        }
    }
}

static bool WriteSlot(void **slot, void *value) {
    DWORD protection;
    if (!VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &protection))
        return false;
    *slot = value;
    VirtualProtect(slot, sizeof(*slot), protection, &protection);
    return true;
}

void *ReplaceImport(HMODULE module, const char *function, void *replacement, ImportHooks *hooks) {
    void *original = nullptr;
    VisitImports(module, [&](const char *, const char *name, void **slot) {
        if (lstrcmpA(name, function) != 0)
            return;
        const ImportHook hook = {slot, *slot};
        if (WriteSlot(slot, replacement)) {
            hooks->hooks.push_back(hook);
            original = hook.original;
        }
    });
    return original;
}

void RestoreImports(ImportHooks *hooks) {
    for (auto hook = hooks->hooks.rbegin(); hook != hooks->hooks.rend(); ++hook)
        WriteSlot(hook->slot, hook->original);
    hooks->hooks.clear();
}

std::vector<std::string> ListImports(HMODULE module) {
    std::vector<std::string> list;
    VisitImports(module, [&](const char *dll, const char *name, void **) {
        list.push_back(std::string(dll) + "!" + name);
    });
    return list;
}

} // namespace host
