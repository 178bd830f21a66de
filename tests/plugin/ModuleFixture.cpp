#include "tests/plugin/ModuleFixture.h"

#include "resources/DialogControlIds.h"
#include "tests/support/ParameterKeys.h"
#include "tests/support/SystemObjects.h"

#include <atomic>
#include <cstring>
#include <cwchar>
#include <fstream>
#include <iterator>
#include <ostream>
#include <windows.h>

#include <objbase.h>
#include <shlobj.h>

namespace {

using DialogBoxFunction = INT_PTR WINAPI(HINSTANCE, LPCWSTR, HWND, DLGPROC, LPARAM);

// The hooks carry no context, and one module is loaded at a time.
struct Watch {
    std::string folder;
    std::atomic<int64_t> heapBlocks, sections, allocations, failAt;
    std::atomic<bool> failLater;
    int64_t comInitializations;
    HRESULT comResult;
    bool refuseSections;
    BOOL(WINAPI *closeHandle)(HANDLE);
    std::atomic<int64_t> events, enteredSection, closedHandle, deletedSection;
    DialogBoxFunction *openOtherDialog;
    int mainDialogs;
};
Watch gWatch;

bool FailsNow() {
    const int64_t count = ++gWatch.allocations;
    const int64_t failAt = gWatch.failAt;
    return failAt > 0 && (count == failAt || (gWatch.failLater && count > failAt));
}

void *WatchedMalloc(size_t size) {
    void *block = FailsNow() ? nullptr : std::malloc(size);
    gWatch.heapBlocks += block != nullptr;
    return block;
}

void *WatchedCalloc(size_t count, size_t size) {
    void *block = FailsNow() ? nullptr : std::calloc(count, size);
    gWatch.heapBlocks += block != nullptr;
    return block;
}

void *WatchedRealloc(void *old, size_t size) {
    void *block = FailsNow() ? nullptr : std::realloc(old, size);
    gWatch.heapBlocks += block != nullptr && old == nullptr;
    return block;
}

void WatchedFree(void *block) {
    gWatch.heapBlocks -= block != nullptr;
    std::free(block);
}

BOOL WINAPI WatchedClose(HANDLE handle) {
    gWatch.closedHandle = ++gWatch.events;
    return gWatch.closeHandle(handle);
}

HRESULT WINAPI WatchedCoInitialize(void *reserved) {
    if (FAILED(gWatch.comResult))
        return gWatch.comResult;
    const HRESULT result = CoInitialize(reserved);
    gWatch.comInitializations += SUCCEEDED(result);
    return result;
}

void WINAPI WatchedCoUninitialize() {
    --gWatch.comInitializations;
    CoUninitialize();
}

BOOL WINAPI WatchedInitializeSection(CRITICAL_SECTION *section, DWORD spins) {
    if (gWatch.refuseSections) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return FALSE;
    }
    const BOOL made = InitializeCriticalSectionAndSpinCount(section, spins);
    gWatch.sections += made != FALSE;
    return made;
}

void WINAPI WatchedEnterSection(CRITICAL_SECTION *section) {
    gWatch.enteredSection = ++gWatch.events;
    EnterCriticalSection(section);
}

void WINAPI WatchedDeleteSection(CRITICAL_SECTION *section) {
    --gWatch.sections;
    gWatch.deletedSection = ++gWatch.events;
    DeleteCriticalSection(section);
}

HRESULT WINAPI WatchedFolderPath(HWND, int kind, HANDLE, DWORD, LPSTR path) {
    const bool isCommon = (kind & 0xFF) == CSIDL_COMMON_APPDATA;
    std::strcpy(path, (gWatch.folder + (isCommon ? "\\common" : "\\user")).c_str());
    return S_OK;
}

// Nobody is there to close the main dialog.
INT_PTR WINAPI WatchedDialogBox(HINSTANCE instance, LPCWSTR name, HWND owner, DLGPROC procedure,
                                LPARAM parameter) {
    if (IS_INTRESOURCE(name) || std::wcscmp(name, kMainDialogName) != 0)
        return gWatch.openOtherDialog(instance, name, owner, procedure, parameter);
    ++gWatch.mainDialogs;
    return IDOK;
}

void HookModule(HMODULE module, host::ImportHooks *hooks) {
    CountSystemObjects(module, hooks);
    const auto hook = [&](const char *name, auto function) {
        return host::ReplaceImport(module, nullptr, name, function, hooks);
    };
    hook("malloc", WatchedMalloc);
    hook("calloc", WatchedCalloc);
    hook("realloc", WatchedRealloc);
    hook("free", WatchedFree);
    gWatch.closeHandle = hook("CloseHandle", WatchedClose);
    hook("CoInitialize", WatchedCoInitialize);
    hook("CoUninitialize", WatchedCoUninitialize);
    hook("InitializeCriticalSectionAndSpinCount", WatchedInitializeSection);
    hook("EnterCriticalSection", WatchedEnterSection);
    hook("DeleteCriticalSection", WatchedDeleteSection);
    hook("SHGetFolderPathA", WatchedFolderPath);
}

} // namespace

std::wstring ModulePath() {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring program = path;
    return program.substr(0, program.rfind(L'\\') + 1) + L"BrillatrixX64.8bf";
}

void ModuleFixture::SetUp() {
    gWatch.folder = folder.Path();
    gWatch.heapBlocks = gWatch.sections = gWatch.allocations = gWatch.failAt = 0;
    gWatch.events = gWatch.enteredSection = gWatch.closedHandle = gWatch.deletedSection = 0;
    gWatch.comInitializations = 0;
    gWatch.comResult = S_OK;
    gWatch.refuseSections = false;
    std::string why;
    ASSERT_TRUE(host::LoadFilterModule(ModulePath(), &module, &why)) << why;
    HookModule(module.module, &hooks);
    const auto keepBox = [this](const host::ShownBox &box) {
        boxes.push_back(box);
        return boxAnswer;
    };
    host::CatchBoxes(module.module, keepBox, true);
    gWatch.mainDialogs = 0;
    gWatch.openOtherDialog =
        host::ReplaceImport(module.module, nullptr, "DialogBoxParamW", WatchedDialogBox, &dialogHooks);
    filterHost.document = host::MakeDocument(8, 6, 8, 3, false);
}

void ModuleFixture::TearDown() {
    FailModuleAllocation(0, false);
    EndModuleRun();
    host::RestoreImports(&dialogHooks);
    host::ReleaseBoxes();
    host::RestoreImports(&hooks);
    host::UnloadFilterModule(&module);
}

// The module must have closed its log before the folder can go.
void ModuleFixture::EndModuleRun() {
    FilterRecord nothing = {};
    intptr_t data = 0;
    int16_t result = 0;
    if (filterHost.state) {
        host::CallSelector(filterHost, kSelectorFinish);
        host::CloseHost(filterHost);
    } else {
        module.entry(kSelectorFinish, &nothing, &data, &result);
    }
}

void ModuleFixture::Open() {
    host::OpenHost(filterHost, module);
    host::ClearLog(filterHost);
}

host::RunResult ModuleFixture::Run(bool withParameters) {
    if (!filterHost.state)
        Open();
    return host::RunFilter(filterHost, withParameters);
}

HeldObjects ModuleFixture::Held() const {
    int objects = 0;
    for (const auto &[call, count] : LiveObjects())
        objects += count;
    return {gWatch.heapBlocks, objects, gWatch.comInitializations, gWatch.sections};
}

TeardownOrder ModuleFixture::LastTeardown() const {
    return {gWatch.enteredSection, gWatch.closedHandle, gWatch.deletedSection};
}

void ModuleFixture::FailModuleAllocation(int64_t n, bool andLater) {
    gWatch.allocations = 0;
    gWatch.failLater = andLater;
    gWatch.failAt = n;
}

int64_t ModuleFixture::ModuleAllocations() const {
    return gWatch.allocations;
}

int ModuleFixture::MainDialogs() const {
    return gWatch.mainDialogs;
}

void ModuleFixture::SetComResult(HRESULT result) {
    gWatch.comResult = result;
}

void ModuleFixture::RefuseCriticalSections(bool refuse) {
    gWatch.refuseSections = refuse;
}

ParameterSet ModuleFixture::SetInHandle() const {
    ParameterSet set{};
    const std::vector<uint8_t> bytes =
        host::HandleBytes(filterHost, host::Record(const_cast<host::FilterHost &>(filterHost)).parameters);
    if (bytes.size() == sizeof(set))
        std::memcpy(&set, bytes.data(), sizeof(set));
    return set;
}

int ModuleFixture::DialogPendingByte() const {
    const std::vector<uint8_t> bytes =
        host::HandleBytes(filterHost, reinterpret_cast<HostHandle>(host::DataWord(filterHost)));
    return bytes.size() == 1 ? bytes[0] : -1;
}

std::string ModuleFixture::SettingsFile() const {
    return folder / "user\\Nexorvanta\\Brillatrix\\Settings\\LastSavedParameters.sss";
}

std::string ModuleFixture::LogText() const {
    const std::string raw =
        ReadWholeFile(folder / "user\\Nexorvanta\\Brillatrix\\Logs\\Brillatrix Pro_00.log");
    std::string text;
    for (size_t i = 2; i + 1 < raw.size(); i += 2)
        text += raw[i];
    return text;
}

void ModuleFixture::ExpectCleanHost() {
    EXPECT_TRUE(filterHost.log.violations.empty()) << ::testing::PrintToString(filterHost.log.violations);
    EXPECT_EQ(filterHost.log.unlocksWithoutLock, 0);
    const host::LiveCounts live = host::CountLive(filterHost);
    EXPECT_EQ(live.suites, 0);
    EXPECT_EQ(live.lockedHandles, 0);
    EXPECT_EQ(live.actionDescriptors, 0);
    EXPECT_EQ(live.readers, 0);
    EXPECT_EQ(live.writers, 0);
    EXPECT_EQ(Held().comInitializations, 0);
}

host::Descriptor ScriptOf(const ParameterSet &set) {
    const auto percent = [](FourCharCode key, int16_t value) {
        return host::UnitFloatValue(key, kUnitPercent, value);
    };
    return {{host::BooleanValue(kKeyOutputSpikesOnly, set.outputSpikesOnly != 0),
             host::EnumeratedValue(kKeyEffect, kTypeEffect, set.effectType),
             percent(kKeyThreshold, set.threshold), percent(kKeyIntensity, set.intensity),
             percent(kKeyLength, set.length), host::UnitFloatValue(kKeyAngle, kUnitAngle, set.angle * 0.1),
             host::IntegerValue(kKeyNumberOfPoints, set.numberOfPoints),
             percent(kKeySpikeSharpness, set.spikeSharpness), percent(kKeySaturation, set.colorSaturation),
             percent(kKeyRainbowIntensity, set.rainbowIntensity),
             percent(kKeyRainbowFrequency, set.rainbowFrequency),
             percent(kKeySecondaryIntensity, set.secondaryIntensity),
             percent(kKeySoftFlareBrightness, set.softFlareBrightness)}};
}

ParameterSet ChangedParameters() {
    ParameterSet set = kDefaultParameters;
    set.intensity = 70;
    set.length = 64;
    set.angle = -225;
    set.numberOfPoints = 5;
    set.spikeSharpness = 44;
    set.colorSaturation = -55;
    set.rainbowIntensity = 66;
    set.rainbowFrequency = 77;
    set.secondaryIntensity = 20;
    set.softFlareBrightness = 45;
    set.effectType = kDefaultParameters.effectType + 2;
    set.threshold = 80;
    return set;
}

bool operator==(const ParameterSet &a, const ParameterSet &b) {
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}
