// Powers, tables and layouts where they leave the library or their usual range. Their values are held against
// the yardsticks in tests/reference.
#include "render/shape/EffectTypes.h"
#include "render/shape/SoftFlare.h"
#include "render/shape/SpikeProfile.h"
#include "render/stamp/StarBuilder.h"
#include "tests/render/RenderFixture.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

// Powers and the integers made of them, against the library's, over many bases and hard ones.
TEST_F(RenderTest, FixedPowersKeepTheirError) {
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> unit(0.001, 1.0);
    for (const double exponent : {1.6, -0.02, -0.43, -1.9, -3.7, -6.9, -5.0, -15.2, -25.0}) {
        FixedPower power;
        PrepareFixedPower(exponent, &power);
        double worst = 0.0;
        for (int i = 0; i < 200000; ++i) {
            const int octave = static_cast<int>(random() % 32);
            const double base = std::ldexp(unit(random) + 1.0, exponent > 0.0 ? -octave : octave);
            const double exact = std::pow(base, exponent);
            worst = std::max(worst, std::fabs(PowerOf(power, base) / exact - 1.0));
        }
        printf("exponent %g: worst error 2^%.1f, allowed 2^%.1f\n", exponent, std::log2(worst),
               std::log2(power.error));
        EXPECT_LT(worst, power.error);
    }
}

TEST_F(RenderTest, SharesAreTheLibrarysIntegers) {
    std::mt19937_64 random(12);
    std::uniform_real_distribution<double> unit(0x1p-54, 1.0);
    const bool longRun = std::getenv("BRILLATRIX_TEST_LONG") != nullptr;
    for (int i = 0; i < (longRun ? 50000000 : 500000); ++i) {
        const double any = i % 4 ? unit(random) : std::ldexp(unit(random), -static_cast<int>(random() % 50));
        const double coverage = std::max(any, 0x1p-54); // an arm has none that is smaller
        ASSERT_EQ(ShareOfCoverage(coverage), ShareByLibrary(coverage)) << coverage;
    }
    // Coverages whose share lies next to a step, where the approximation must give way; in every lane of a
    // row.
    uint32_t along = UINT32_MAX, values[2][8];
    uint16_t states[8] = {};
    ValueTable table{};
    table.values = &along, table.count = 1;
    Arm arm{};
    arm.edgeSlope = 1.0, arm.values = &table;
    for (uint32_t share = 1; share < 4200000000u; share += 4000037u)
        for (double coverage : {std::pow((share - 0.5) / kFractionOne, 1 / 1.6)})
            for (int i = 0; i < 6; ++i, coverage = std::nextafter(coverage, i % 2 ? 0.0 : 2.0)) {
                ASSERT_EQ(ShareOfCoverage(coverage), ShareByLibrary(coverage)) << coverage;
                arm.halfWidth = 4.0 * coverage - 2.0;
                kPortablePath.fillArm({&arm, states, true, 0, 0, 8}, values[0], states);
                path->fillArm({&arm, states, true, 0, 0, 8}, values[1], states);
                ASSERT_TRUE(std::equal(values[0], values[1], values[1])) << coverage;
            }
    EXPECT_EQ(ShareOfCoverage(1.0), kFractionOne);
}

// A table ends where its values do, and a level's reach is neither too short nor far too long.
TEST_F(RenderTest, ReachesOfLevels) {
    const SpikeProfileInputs inputs{50, 50, 600000000u, 100.0, 1000};
    const ValueTable table = DescribeSpike(inputs, 4095, 1000000);
    for (uint32_t level = 1; level < 400000000u; level += level / 8 + 1) {
        const uint32_t reach = ReachOfLevel(table, level);
        EXPECT_TRUE(reach == table.count || SpikeValueAt(table, reach) < level) << level;
        EXPECT_GE(ComputeSpikeValue(inputs, reach), std::min(level / 2, 4000u)) << level;
    }
}

TEST_F(RenderTest, LimitsEndWhereOffsetsDo) {
    RenderSettings settings = kSettings;
    settings.scale = 100000.0;
    EXPECT_EQ(MakeStampContext(settings).limitX, 131080);
    SetImageGeometry({0, 0, 0, 0});
    EXPECT_EQ(MakeStampContext(settings).diagonal, 1);
}

constexpr uint32_t kTypes[] = {kStandardStar, kHollywoodStar, kReligiousCross, kHyperStar,
                               kNorthStar,    kVectorStar,    kStarBurst};

TEST_F(RenderTest, NoArmsForPointsOrTypesOutOfRange) {
    for (const int32_t n : {-32768, -1, 0, 33, 32767})
        for (const uint32_t type : kTypes)
            EXPECT_EQ(LayoutStar({type, 0, n, 50, kFractionOne}).count, 0);
    EXPECT_EQ(LayoutStar({kStarBurst + 1, 0, 6, 50, kFractionOne}).count, 0);
}

TEST_F(RenderTest, PresetPointsOfEveryType) {
    constexpr int32_t kPresets[] = {6, 4, 4, 14, 4, 8, 14};
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(PresetPoints(kTypes[i]), kPresets[i]);
    EXPECT_EQ(PresetPoints(0), 0);
    EXPECT_EQ(PresetPoints(kStarBurst + 1), 0);
}

} // namespace
