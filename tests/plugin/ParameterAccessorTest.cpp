// The accessor's comparison with the current set, and the settings of a render made from it.
#include "plugin/parameters/ParameterAccessor.h"
#include "plugin/record/PluginState.h"
#include "tests/plugin/ModuleFixture.h"

#include <cstdlib>
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
    ParameterSet current = kDefaultParameters;
};

} // namespace

// Every field counts, the version and the padding do not.
TEST_F(ParameterAccess, CompareLooksAtEveryFieldFromIntensityToThreshold) {
    const OwnedBlock block(reinterpret_cast<ParameterBlock *>(Access(kMakeCurrentBlock)));
    EXPECT_EQ(Access(kCompareBlock, block.get()), 1u);
    for (size_t i = 0; i < kParameterBlockSize; ++i) {
        const bool isField = (i >= 8 && i < 29) || (i >= 32 && i < 38);
        block->bytes[i] ^= 0x10;
        EXPECT_EQ(Access(kCompareBlock, block.get()), isField ? 0u : 1u) << i;
        block->bytes[i] ^= 0x10;
    }
}

TEST_F(ParameterAccess, RenderSettingsAreACopy) {
    current = {{0, 0, 0, 5}, 1, 2, -3, 4, 5, -6, 7, 8, 9, 10, 1, {}, kStarBurst, 11, {}};
    const RenderSettings s = MakeRenderSettings(current, 100.0);
    EXPECT_EQ(std::vector({s.intensity, s.length, s.angle, s.numberOfPoints, s.spikeSharpness,
                           s.colorSaturation, s.rainbowIntensity, s.rainbowFrequency, s.secondaryIntensity,
                           s.softFlareIntensity, s.threshold}),
              (std::vector<int16_t>{1, 2, -3, 4, 5, -6, 7, 8, 9, 10, 11}));
    EXPECT_TRUE(s.effectsOnly);
    EXPECT_EQ(s.effectType, kStarBurst);
    EXPECT_EQ(s.scale, 100.0);
}
