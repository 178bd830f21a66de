// The accessor's operations on the current set, and the settings of a render made from it.
#include "plugin/parameters/ParameterAccessor.h"
#include "plugin/record/PluginState.h"
#include "tests/plugin/ModuleFixture.h"

#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

struct FreeBlock {
    void operator()(ParameterBlock *block) const { std::free(block); }
};
using OwnedBlock = std::unique_ptr<ParameterBlock, FreeBlock>;

struct ParameterAccess : ::testing::Test {
    void SetUp() override { gParameters = &current; }
    void TearDown() override { gParameters = nullptr; }

    static uintptr_t Access(int32_t operation, const ParameterBlock *block = nullptr) {
        return AccessParameterBlock(operation, block);
    }
    static OwnedBlock Make(int32_t operation) {
        return OwnedBlock(reinterpret_cast<ParameterBlock *>(Access(operation)));
    }
    static ParameterSet SetOf(const ParameterBlock &block) {
        ParameterSet set;
        std::memcpy(&set, block.bytes, sizeof(set));
        return set;
    }
    ParameterSet current = kDefaultParameters;
};

} // namespace

TEST_F(ParameterAccess, BlocksAreTheSetThenZeros) {
    current.angle = -900;
    current.version[0] = 7; // a block always carries the current version
    const OwnedBlock block = Make(kMakeCurrentBlock), defaults = Make(kMakeDefaultBlock);
    ASSERT_TRUE(block && defaults);
    EXPECT_EQ(SetOf(*block).angle, -900);
    EXPECT_EQ(std::memcmp(SetOf(*block).version, kDefaultParameters.version, 8), 0);
    EXPECT_EQ(SetOf(*defaults), kDefaultParameters);
    for (size_t i = sizeof(ParameterSet); i < kParameterBlockSize; ++i)
        EXPECT_EQ(block->bytes[i] | defaults->bytes[i], 0);
    const auto *identity = reinterpret_cast<const ParameterBlock *>(Access(kIdentityBlock));
    EXPECT_EQ(identity->bytes[6], 5);
    EXPECT_EQ(std::count(identity->bytes, identity->bytes + kParameterBlockSize, 0), 254);
}

TEST_F(ParameterAccess, CommitTakesVersionAndFields) {
    OwnedBlock block = Make(kMakeDefaultBlock);
    ParameterSet set = SetOf(*block);
    set.version[3] = 9;
    set.threshold = 12;
    std::memcpy(block->bytes, &set, sizeof(set));
    set.outputSpikesOnly = 1;
    block->bytes[28] = 7;    // as a switch
    block->bytes[30] = 0xEE; // padding
    EXPECT_EQ(Access(kCommitBlock, block.get()), 1u);
    EXPECT_EQ(current, set);
    EXPECT_EQ(Access(kResetToDefaults), 1u);
    EXPECT_EQ(current, kDefaultParameters);
}

// Every field counts, the version and the padding do not.
TEST_F(ParameterAccess, CompareLooksAtEveryFieldFromIntensityToThreshold) {
    const OwnedBlock block = Make(kMakeCurrentBlock);
    EXPECT_EQ(Access(kCompareBlock, block.get()), 1u);
    for (size_t i = 0; i < kParameterBlockSize; ++i) {
        const bool isField = (i >= 8 && i < 29) || (i >= 32 && i < 38);
        block->bytes[i] ^= 0x10;
        EXPECT_EQ(Access(kCompareBlock, block.get()), isField ? 0u : 1u) << i;
        block->bytes[i] ^= 0x10;
    }
}

TEST_F(ParameterAccess, FailuresAreZero) {
    const OwnedBlock block = Make(kMakeDefaultBlock);
    EXPECT_EQ(Access(kConvertBlock, block.get()), 0u);
    EXPECT_EQ(Access(7, block.get()), 0u);
    EXPECT_EQ(Access(-1), 0u);
    EXPECT_EQ(Access(kCommitBlock), 0u);
    EXPECT_EQ(Access(kCompareBlock), 0u);
    gParameters = nullptr; // no handle is locked
    for (const int32_t operation : {kMakeCurrentBlock, kCommitBlock, kCompareBlock, kResetToDefaults})
        EXPECT_EQ(Access(operation, block.get()), 0u) << operation;
}

TEST_F(ParameterAccess, RenderSettingsAreAClampedCopy) {
    current = {{0, 0, 0, 5}, 1, 2, -3, 4, 5, -6, 7, 8, 9, 10, 1, {}, kStarBurst, 11, {}};
    const RenderSettings s = MakeRenderSettings(current, 100.0);
    EXPECT_EQ(std::vector({s.intensity, s.length, s.angle, s.numberOfPoints, s.spikeSharpness,
                           s.colorSaturation, s.rainbowIntensity, s.rainbowFrequency, s.secondaryIntensity,
                           s.softFlareIntensity, s.threshold}),
              (std::vector<int16_t>{1, 2, -3, 4, 5, -6, 7, 8, 9, 10, 11}));
    EXPECT_TRUE(s.effectsOnly);
    EXPECT_EQ(s.effectType, kStarBurst);
    EXPECT_EQ(s.scale, 100.0);
    current.numberOfPoints = 0;
    current.rainbowFrequency = 107;
    EXPECT_EQ(MakeRenderSettings(current, 100.0).numberOfPoints, 1);
    EXPECT_EQ(MakeRenderSettings(current, 100.0).rainbowFrequency, 100);
}
