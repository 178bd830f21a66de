// The block kept between runs: by the host when it can, by the initial-settings file when it cannot.
#include "plugin/parameters/PersistentBlock.h"
#include "tests/plugin/ModuleFixture.h"

#include <cstring>
#include <windows.h>

namespace {

constexpr uint32_t kBlockKey = 'PBlk';

class Persistent : public ModuleFixture {
protected:
    void SetHostBlock(const host::DescriptorValue &value) {
        filterHost.registry = {{kScopeGuid, {{value}}, true}};
    }
    // A run without script and without Parameters; true with code 0.
    bool Repeat() {
        filterHost.script.reset();
        return Run(false).code == kNoError;
    }
};

ParameterSet SetWith(int16_t intensity) {
    ParameterSet set = kDefaultParameters;
    set.intensity = intensity;
    set.effectType = kVectorStar;
    return set;
}

std::vector<uint8_t> BlockOf(const ParameterSet &set) {
    std::vector<uint8_t> bytes(255);
    std::memcpy(bytes.data(), &set, sizeof(set));
    return bytes;
}

host::DescriptorValue Data(const std::vector<uint8_t> &bytes) {
    return host::DataValue(kBlockKey, bytes.data(), bytes.size());
}

} // namespace

TEST_F(Persistent, TheHostKeepsTheSetBetweenRuns) {
    filterHost.settings.forgetHandles = true;
    filterHost.script = ScriptOf(SetWith(77));
    EXPECT_EQ(Run().code, kNoError);
    ASSERT_EQ(filterHost.registry.size(), 1u);
    EXPECT_EQ(filterHost.registry[0].key, "cb7c0ae0-5b05-43f7-9c55-faa95b3359ba");
    EXPECT_TRUE(filterHost.registry[0].isPersistent);
    const host::DescriptorValue *block = host::FindValue(filterHost.registry[0].descriptor, kBlockKey);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(block->type, kTypeRawData);
    EXPECT_EQ(block->bytes, BlockOf(SetWith(77)));
    EXPECT_EQ(block->bytes[6], 5); // of the version
    EXPECT_FALSE(Exists(SettingsFile()));
    EXPECT_TRUE(Repeat());
    filterHost.settings.forgetHandles = false;
    EXPECT_TRUE(Repeat());
    EXPECT_EQ(SetInHandle(), SetWith(77));
    filterHost.registry.clear();
    host::CallSelector(filterHost, kSelectorFinish); // without a run
    EXPECT_TRUE(filterHost.registry.empty());
    ExpectCleanHost();
}

// Handles that come back as bytes of an older run never decide: the block does.
TEST_F(Persistent, TheBlockWinsOverTheHandle) {
    filterHost.settings.restoreHandlesAsBytes = true;
    filterHost.script = ScriptOf(SetWith(10));
    EXPECT_EQ(Run().code, kNoError);
    SetHostBlock(Data(BlockOf(SetWith(20))));
    EXPECT_TRUE(Repeat());
    EXPECT_EQ(SetInHandle(), SetWith(20));
    ExpectCleanHost();
}
