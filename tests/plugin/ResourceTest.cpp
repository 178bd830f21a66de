// The built module's resources and its import and export tables, read back from the file.
#include "host/module/FilterModule.h"
#include "host/module/ModuleImports.h"
#include "plugin/interface/ScriptKeys.h"
#include "render/ParameterSet.h"
#include "resources/ResourceIds.h"
#include "tests/plugin/ModuleFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <set>
#include <string_view>
#include <windows.h>

namespace {

struct BuiltModule : ::testing::Test {
    void SetUp() override {
        module = LoadLibraryExW(ModulePath().c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES);
        ASSERT_NE(module, nullptr);
    }
    void TearDown() override { FreeLibrary(module); }

    std::vector<uint8_t> Resource(const wchar_t *type, int id) const {
        std::vector<uint8_t> bytes;
        EXPECT_TRUE(host::ReadModuleResource(module, type, static_cast<uint16_t>(id), &bytes));
        return bytes;
    }
    HMODULE module = nullptr;
};

std::set<std::string> ExportedNames(HMODULE module) {
    const auto *base = reinterpret_cast<const uint8_t *>(module);
    const auto *dos = reinterpret_cast<const IMAGE_DOS_HEADER *>(base);
    const auto *headers = reinterpret_cast<const IMAGE_NT_HEADERS64 *>(base + dos->e_lfanew);
    const auto *table = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY *>(
        base + headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress);
    const auto *names = reinterpret_cast<const uint32_t *>(base + table->AddressOfNames);
    EXPECT_EQ(table->NumberOfFunctions, table->NumberOfNames); // none by number only
    std::set<std::string> found;
    for (uint32_t i = 0; i < table->NumberOfNames; ++i)
        found.insert(reinterpret_cast<const char *>(base + names[i]));
    return found;
}

// FNV-1a.
uint64_t Hash(const std::vector<uint8_t> &bytes) {
    uint64_t hash = 0xCBF29CE484222325;
    for (const uint8_t byte : bytes)
        hash = (hash ^ byte) * 0x100000001B3;
    return hash;
}

} // namespace

TEST_F(BuiltModule, ExportsTheEntryAndThreeDialogProceduresAndNothingElse) {
    EXPECT_EQ(ExportedNames(module),
              (std::set<std::string>{"PluginMain", "BrillatrixProc", "DisplayLightSourceTableProc",
                                     "DebugImageProc"}));
}

// Compiler run-time libraries would have to lie beside the module, and a host's plug-in folder is not
// searched.
TEST_F(BuiltModule, ImportsSystemLibrariesOnly) {
    const std::set<std::string> allowed = {"kernel32.dll", "msvcrt.dll",  "user32.dll",   "shell32.dll",
                                           "ole32.dll",    "gdi32.dll",   "advapi32.dll", "comctl32.dll",
                                           "comdlg32.dll", "version.dll", "uxtheme.dll"};
    const std::vector<std::string> imports = host::ListImports(module);
    EXPECT_FALSE(imports.empty());
    for (const std::string &import : imports) {
        std::string dll = import.substr(0, import.find('!'));
        std::transform(dll.begin(), dll.end(), dll.begin(), [](unsigned char c) { return std::tolower(c); });
        EXPECT_TRUE(allowed.contains(dll) && import.find("Crypt") == import.npos) << import;
    }
}

// Data never runs, code is never written, addresses are drawn at every load, and overrun arrays are noticed.
TEST_F(BuiltModule, IsHardened) {
    const auto *base = reinterpret_cast<const uint8_t *>(module);
    const auto *headers = reinterpret_cast<const IMAGE_NT_HEADERS64 *>(
        base + reinterpret_cast<const IMAGE_DOS_HEADER *>(base)->e_lfanew);
    constexpr WORD kWanted = IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA |
                             IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE | IMAGE_DLLCHARACTERISTICS_NX_COMPAT;
    EXPECT_EQ(headers->OptionalHeader.DllCharacteristics & kWanted, kWanted);
    EXPECT_EQ(headers->OptionalHeader.FileAlignment,
              headers->OptionalHeader.SectionAlignment); // loads faster
    const IMAGE_SECTION_HEADER *section = IMAGE_FIRST_SECTION(headers);
    for (int i = 0; i < headers->FileHeader.NumberOfSections; i++) {
        constexpr DWORD kBoth = IMAGE_SCN_MEM_WRITE | IMAGE_SCN_MEM_EXECUTE;
        EXPECT_NE(section[i].Characteristics & kBoth, kBoth) << i;
    }
    // Only what ends an overrun asks for it.
    const std::vector<std::string> imports = host::ListImports(module);
    EXPECT_TRUE(std::any_of(imports.begin(), imports.end(), [](const std::string &import) {
        return import.ends_with("!RaiseFailFastException");
    }));
}

// The bytes are what hosts and recorded actions know the filter by.
TEST_F(BuiltModule, PropertyListAndTerminologyNeverChange) {
    EXPECT_EQ(Hash(Resource(L"PIPL", kPropertyListId)), 0xE8F5414E245A6FEDu);
    const std::vector<uint8_t> terms = Resource(L"AETE", kTerminologyId);
    EXPECT_EQ(Hash(terms), 0x37D47DE980834699u);
    std::vector<uint32_t> codes = {kTypeEffect, kKeyOutputSpikesOnly, kKeyEffect};
    for (const EffectType &type : kEffectTypes)
        codes.push_back(type.code);
    for (const ParameterInfo &parameter : kParameters)
        codes.push_back(parameter.key);
    for (const uint32_t code : codes) {
        const auto *first = reinterpret_cast<const uint8_t *>(&code);
        EXPECT_NE(std::search(terms.begin(), terms.end(), first, first + 4), terms.end()) << code;
    }
}

TEST_F(BuiltModule, HasAWaitCursor) {
    EXPECT_NE(LoadCursorW(module, MAKEINTRESOURCEW(kWaitCursorId)), nullptr);
}
