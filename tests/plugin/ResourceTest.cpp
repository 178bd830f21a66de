// The built module's resources and its import and export tables, read back from the file.
#include "host/Aete.h"
#include "host/FilterModule.h"
#include "host/ModuleImports.h"
#include "resources/ResourceIds.h"
#include "tests/plugin/ModuleFixture.h"
#include "tests/plugin/Sha256.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <set>
#include <windows.h>

namespace {

constexpr uint32_t kNexorvanta = 0x4E585631; // 'NXV1'

struct MappedModule : ::testing::Test {
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
using BuiltModule = MappedModule;

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

} // namespace

TEST_F(BuiltModule, ExportsTheEntryAndThreeDialogProceduresAndNothingElse) {
    EXPECT_EQ(ExportedNames(module),
              (std::set<std::string>{"PluginMain", "BrillatrixProc", "DisplayLightSourceTableProc",
                                     "DebugImageProc"}));
}

// Compiler run-time libraries would have to lie beside the module, and a host's plug-in folder is not
// searched.
TEST_F(BuiltModule, ImportsSystemLibrariesOnly) {
    const std::set<std::string> allowed = {"kernel32.dll", "msvcrt.dll", "user32.dll",   "shell32.dll",
                                           "ole32.dll",    "gdi32.dll",  "advapi32.dll", "comctl32.dll",
                                           "comdlg32.dll", "version.dll"};
    const std::vector<std::string> imports = host::ListImports(module);
    EXPECT_FALSE(imports.empty());
    for (const std::string &import : imports) {
        std::string dll = import.substr(0, import.find('!'));
        std::transform(dll.begin(), dll.end(), dll.begin(), [](unsigned char c) { return std::tolower(c); });
        EXPECT_TRUE(allowed.contains(dll)) << import;
    }
}

TEST_F(BuiltModule, PropertyListHasEveryValue) {
    const std::vector<uint8_t> bytes = Resource(L"PIPL", kPropertyListId);
    EXPECT_EQ(Sha256(bytes), "458c3d919c40cf3e83e24ebd76a2b1ad987e4bd8aa7e3afe31dacbee7751dd4d");
    host::Pipl list;
    std::string why;
    ASSERT_TRUE(host::ParsePipl(bytes.data(), bytes.size(), &list, &why)) << why;
    EXPECT_EQ(list.properties.size(), 11u);
    EXPECT_EQ(list.kind, 0x3842464Du); // '8BFM'
    EXPECT_EQ(list.name, "Brillatrix Pro...");
    EXPECT_EQ(list.category, "Nexorvanta Software");
    EXPECT_EQ(list.version, 0x00040000u);
    EXPECT_EQ(list.entryName64, "PluginMain");
    EXPECT_EQ(list.modes, 0x50u);
    EXPECT_TRUE(list.hasTerminology);
    EXPECT_EQ(list.terminologyClass, kNexorvanta);
    EXPECT_EQ(list.terminologyEvent, kNexorvanta);
    EXPECT_EQ(list.terminologyId, 16000);
    EXPECT_EQ(list.terminologyScope, "cb7c0ae0-5b05-43f7-9c55-faa95b3359ba");
    EXPECT_EQ(list.enableExpression,
              "in (PSHOP_ImageMode, RGBMode, GrayScaleMode, RGB48Mode, Gray16Mode, RGB96Mode, Gray32Mode)");
    EXPECT_EQ(list.maxRows, 32767);
    EXPECT_EQ(list.maxColumns, 32767);
    EXPECT_EQ(list.layerSupport, 0x80u);
    ASSERT_TRUE(list.hasFilterCases);
    for (const host::FilterCaseInfo &info : list.filterCases) {
        EXPECT_EQ(info.inputHandling, 1);
        EXPECT_EQ(info.outputHandling, 1);
        EXPECT_EQ(info.flags, 0x0D);
        EXPECT_EQ(info.reserved, 0);
    }
}

TEST_F(BuiltModule, TerminologyHasEveryValue) {
    struct Row {
        const char *name;
        uint32_t key, type;
        const char *description;
        uint16_t flags;
    };
    const Row rows[] = {
        {"output spikes only", 'opsO', 'bool', "Brillatrix output spikes only", 0},
        {"effect", 'stEf', 'efTy', "Brillatrix star effect type", 0x2000},
        {"threshold", 'Thsh', 'doub', "Brillatrix threshold", 0},
        {"intensity", 'Intn', 'doub', "Brillatrix intensity", 0},
        {"length", 'Lngt', 'doub', "Brillatrix length", 0},
        {"angle", 'Angl', 'doub', "Brillatrix angle", 0},
        {"number of points", 'numP', 'long', "Brillatrix number of points", 0},
        {"spike sharpness", 'spsH', 'doub', "Brillatrix spike sharpness", 0},
        {"saturation", 'Strt', 'doub', "Brillatrix color saturation", 0},
        {"rainbow intensity", 'rbwI', 'doub', "Brillatrix rainbow intensity", 0},
        {"rainbow frequency", 'rbwF', 'doub', "Brillatrix rainbow frequency", 0},
        {"secondary spike intensity", 'sspI', 'doub', "Brillatrix secondary spike intensity", 0},
        {"soft flare brightness", 'sflB', 'doub', "Brillatrix soft flare brightness", 0}};
    const std::pair<const char *, uint32_t> effects[] = {
        {"Standard Star", 'efT0'}, {"Hollywood Star", 'efT1'}, {"Hyper Star", 'efT3'},
        {"North Star", 'efT4'},    {"Vector Star", 'efT5'},    {"Religious Cross", 'efT2'},
        {"Star Burst", 'efT6'}};
    const std::vector<uint8_t> bytes = Resource(L"AETE", kTerminologyId);
    EXPECT_EQ(Sha256(bytes), "3b5e6fd03bc4e2616440143a952ff4276598a0b13911ea8a21faad24a7f20808");
    host::Aete terms;
    std::string why;
    ASSERT_TRUE(host::ParseAete(bytes.data(), bytes.size(), &terms, &why)) << why;
    EXPECT_EQ(terms.suiteName, "Nexorvanta Software");
    EXPECT_EQ(terms.suiteDescription, "Nexorvanta Software");
    EXPECT_EQ(terms.suiteId, kNexorvanta);
    EXPECT_EQ(terms.suiteLevel, 1);
    EXPECT_EQ(terms.suiteVersion, 1);
    EXPECT_EQ(terms.eventName, "Brillatrix Pro");
    EXPECT_EQ(terms.eventDescription, "Brillatrix Pro filter plug-in");
    EXPECT_EQ(terms.eventClass, kNexorvanta);
    EXPECT_EQ(terms.eventId, kNexorvanta);
    EXPECT_EQ(terms.replyType, static_cast<uint32_t>('null'));
    EXPECT_EQ(terms.replyFlags, 0);
    EXPECT_EQ(terms.directType, static_cast<uint32_t>('#ImR'));
    EXPECT_EQ(terms.directFlags, 0xB000);
    ASSERT_EQ(terms.parameters.size(), std::size(rows));
    for (size_t i = 0; i < std::size(rows); ++i) {
        SCOPED_TRACE(rows[i].name);
        EXPECT_EQ(terms.parameters[i].name, rows[i].name);
        EXPECT_EQ(terms.parameters[i].key, rows[i].key);
        EXPECT_EQ(terms.parameters[i].type, rows[i].type);
        EXPECT_EQ(terms.parameters[i].description, rows[i].description);
        EXPECT_EQ(terms.parameters[i].flags, rows[i].flags);
    }
    EXPECT_EQ(terms.classCount, 0);
    EXPECT_EQ(terms.comparisonCount, 0);
    ASSERT_EQ(terms.enumerations.size(), 1u);
    EXPECT_EQ(terms.enumerations[0].type, static_cast<uint32_t>('efTy'));
    ASSERT_EQ(terms.enumerations[0].values.size(), std::size(effects));
    for (size_t i = 0; i < std::size(effects); ++i) {
        EXPECT_EQ(terms.enumerations[0].values[i].name, effects[i].first);
        EXPECT_EQ(terms.enumerations[0].values[i].code, effects[i].second);
        EXPECT_EQ(terms.enumerations[0].values[i].description, std::string(effects[i].first) + " Effect");
    }
}

TEST_F(BuiltModule, HasVersionAboutBoxAndWaitCursor) {
    const std::vector<uint8_t> version = Resource(MAKEINTRESOURCEW(16), VS_VERSION_INFO);
    const auto *info = reinterpret_cast<const VS_FIXEDFILEINFO *>(version.data() + 40);
    ASSERT_GE(version.size(), 40 + sizeof(*info));
    EXPECT_EQ(info->dwSignature, 0xFEEF04BDu);
    EXPECT_EQ(info->dwFileVersionMS, 0x00010000u);
    EXPECT_EQ(info->dwFileVersionLS, 0u);
    EXPECT_EQ(info->dwProductVersionMS, 0x00010000u);
    const std::u16string text(reinterpret_cast<const char16_t *>(version.data()), version.size() / 2);
    EXPECT_NE(text.find(u"Brillatrix Pro"), std::u16string::npos);
    EXPECT_NE(text.find(u"Nexorvanta Software"), std::u16string::npos);
    EXPECT_NE(text.find(u"1.0.0.0"), std::u16string::npos);
    EXPECT_NE(FindResourceW(module, MAKEINTRESOURCEW(kAboutDialogId), MAKEINTRESOURCEW(5)),
              nullptr); // RT_DIALOG
    EXPECT_NE(LoadCursorW(module, MAKEINTRESOURCEW(kWaitCursorId)), nullptr);
}
