// Angle tables, distances, the fall-off along a spike, and the rainbow. Expected integers were worked out by
// a script of their own.
#include "render/Rainbow.h"
#include "render/SpikeProfile.h"
#include "render/StarBuilder.h"
#include "tests/render/RenderFixture.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

TEST_F(RenderTest, AngleTablesMatchKnownEntries) {
    const std::pair<int32_t, uint32_t> known[] = {
        {0, 2147483647u},    {1, 2151231711u},    {300, 3221225471u}, {900, 4294967294u}, {1799, 2151231297u},
        {1800, 2147483647u}, {2100, 1073741824u}, {2700, 0u},         {3599, 2143735997u}};
    for (const auto &[index, value] : known)
        EXPECT_EQ(gRainbowTable[index], value) << index;
    EXPECT_EQ(gSineTable[300], 0.5f);
    for (int32_t i = 0; i < 1800; ++i)
        EXPECT_EQ(gSineTable[i + 1800], -gSineTable[i]);
    EXPECT_EQ(ReduceAngle(-1), 3599);
    EXPECT_EQ(ReduceAngle(-7200), 0);
    EXPECT_EQ(ReduceAngle(3600), 0);
}

// Rounded to nearest, the same below and above the end of the memo, and the same when asked again.
TEST_F(RenderTest, DistancesAreRoundedTenths) {
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(MeasureDistance(0, 0), 0u);
        EXPECT_EQ(MeasureDistance(-1, 1), 14u);
        EXPECT_EQ(MeasureDistance(3, -4), 50u);
        EXPECT_EQ(MeasureDistance(1, 2), 22u);
        EXPECT_EQ(MeasureDistance(655, 21), 6553u); // just below the end of the memo
        EXPECT_EQ(MeasureDistance(655, 22), 6554u); // just above
        EXPECT_EQ(MeasureDistance(-131068, 131068), 1853581u);
    }
    for (int32_t x = 0; x < 700; x += 7)
        for (int32_t y = 0; y < 700; y += 11)
            EXPECT_EQ(MeasureDistance(x, -y), std::lround(10.0 * std::hypot(x, y))) << x << " " << y;
}

TEST_F(RenderTest, SpikeValueIsFlatThenFalls) {
    const SpikeProfileInputs inputs{50, 50, 600000000u, 100.0, 1000};
    const std::pair<uint32_t, uint32_t> known[] = {{0, 600000000},   {110, 600000000}, {115, 577891769},
                                                   {200, 256937741}, {1000, 13753542}, {32767, 9896},
                                                   {32768, 9895},    {50000, 4060}};
    ValueTable table{};
    SpikeLevels levels{};
    ASSERT_TRUE(BuildSpikeTable(inputs, 4095, 1000000, &levels, &table));
    FreeSpikeLevels(&levels);
    for (const auto &[distance, value] : known) {
        EXPECT_EQ(ComputeSpikeValue(inputs, distance), value) << distance;
        EXPECT_EQ(ValueAt(table, distance), value >= 4095 ? value : 0) << distance;
    }
    for (uint32_t level = 1; level < 400000000u; level += level / 8 + 1) {
        const uint32_t reach = ReachOfLevel(table, level);
        EXPECT_TRUE(reach == table.count || ValueAt(table, reach) < level) << level;
        EXPECT_GE(ComputeSpikeValue(inputs, reach), std::min(level / 2, 4000u)) << level; // not far too far
    }
    FreeValueTable(&table);
}

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
        const double coverage =
            i % 4 ? unit(random) : std::ldexp(unit(random), -static_cast<int>(random() % 50));
        ASSERT_EQ(ShareOfCoverage(coverage), ShareByLibrary(coverage)) << coverage;
    }
    // Coverages whose share lies next to a step, where the approximation must give way.
    for (uint32_t share = 1; share < 4200000000u; share += 4000037u)
        for (double coverage : {std::pow((share - 0.5) / kFractionOne, 1 / 1.6)})
            for (int i = 0; i < 6; ++i, coverage = std::nextafter(coverage, i % 2 ? 0.0 : 2.0))
                ASSERT_EQ(ShareOfCoverage(coverage), ShareByLibrary(coverage)) << coverage;
    EXPECT_EQ(ShareOfCoverage(1.0), kFractionOne);
}

struct RainbowCase {
    uint32_t distance;
    double scale;
    int32_t diagonal;
    int16_t intensity, frequency;
    bool precise;
    uint32_t factor[3];
};

TEST_F(RenderTest, RainbowFactorsToTheInteger) {
    const RainbowCase cases[] = {
        {0, 100.0, 1000, 100, 50, true, {4294967294u, 4294967294u, 4294967294u}},
        {25, 100.0, 1000, 100, 50, true, {4249396608u, 4292136971u, 4269280143u}},
        {25, 100.0, 1000, 100, 50, false, {4249407670u, 4292140162u, 4269288014u}},
        {400, 100.0, 1000, 100, 50, true, {3743308576u, 4292097668u, 3660863811u}},
        {400, 100.0, 1000, 37, 100, true, {2901640294u, 3347426454u, 4252128376u}},
        {400, 100.0, 1000, 37, 0, true, {4222184874u, 4292573253u, 4246191152u}},
        {800, 200.0, 1000, 100, 50, true, {3743308576u, 4292097668u, 3660863811u}}, // independent of zoom
        {90000, 100.0, 257, 63, 100, true, {2749087825u, 1878855539u, 4198214780u}},
    };
    for (const RainbowCase &c : cases) {
        StampContext context = MakeStampContext(DefaultSettings());
        context.settings.scale = c.scale;
        context.settings.rainbowIntensity = c.intensity;
        context.settings.rainbowFrequency = c.frequency;
        context.diagonal = c.diagonal;
        gPreciseMode = c.precise;
        const RainbowFactors factors = FactorsOfState(context, RainbowStateAt(context, c.distance));
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(factors.factor[i], c.factor[i]) << c.distance << " channel " << i;
    }
}

TEST_F(RenderTest, NoRainbowLeavesEveryDistanceUntintedAndFullOneDimsToNothing) {
    StampContext context = MakeStampContext(DefaultSettings());
    context.settings.rainbowIntensity = 0;
    uint32_t least = kFractionOne;
    for (uint32_t distance = 0; distance < 20000; distance += 13) {
        context.settings.rainbowIntensity = 0;
        for (const uint32_t factor : FactorsOfState(context, RainbowStateAt(context, distance)).factor)
            EXPECT_EQ(factor, kFractionOne);
        context.settings.rainbowIntensity = 100;
        for (const uint32_t factor : FactorsOfState(context, RainbowStateAt(context, distance)).factor)
            least = std::min(least, factor);
    }
    EXPECT_LT(least, kFractionOne / 100);
}

TEST_F(RenderTest, StarFactorsFromTheSettings) {
    StampContext context = MakeStampContext(DefaultSettings());
    context.settings.spikeSharpness = 100;
    context.diagonal = 1000;
    context.settings.scale = 50.0;
    EXPECT_DOUBLE_EQ(StarSharpnessFactor(context), 10.03);
    EXPECT_DOUBLE_EQ(StarWidthFactor(context), 0.25);
    EXPECT_EQ(SpikeBrightness(0), 0u);
    EXPECT_EQ(SpikeBrightness(100), kFractionOne);
    EXPECT_EQ(SpikeBrightness(50), 616702733u);
}

TEST_F(RenderTest, LimitsCountQuarterPixelsAtTheZoom) {
    RenderSettings settings = DefaultSettings();
    SetImageGeometry({10, 20, 210, 180});
    EXPECT_EQ(MakeStampContext(settings).limitX, 801);
    EXPECT_EQ(MakeStampContext(settings).limitY, 641);
    settings.scale = 33.0;
    EXPECT_EQ(MakeStampContext(settings).limitX, 265);
    EXPECT_EQ(MakeStampContext(settings).limitY, 212);
    settings.scale = 100000.0; // past what any entry can hold
    EXPECT_EQ(MakeStampContext(settings).limitX, 131080);
    SetImageGeometry({0, 0, 0, 0});
    EXPECT_EQ(MakeStampContext(settings).diagonal, 1);
}

} // namespace
