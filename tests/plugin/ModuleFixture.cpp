#include "tests/plugin/ModuleFixture.h"

#include <cstring>
#include <fstream>
#include <iterator>
#include <ostream>
#include <windows.h>

void ModuleFixture::SetUp() {
    module = LoadWatchedModule(folder.Path());
    const auto keepBox = [this](const host::ShownBox &box) {
        boxes.push_back(box);
        return boxAnswer;
    };
    CatchModuleBoxes(module, keepBox);
    filterHost.document = host::MakeDocument(8, 6, 8, 3, false);
}

void ModuleFixture::TearDown() {
    FailModuleAllocation(0, false);
    EndModuleRun();
    UnloadWatchedModule(&module);
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
