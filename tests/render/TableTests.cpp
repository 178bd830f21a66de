// Angle tables, distances, the fall-off along a spike, and the rainbow. Expected integers were worked out by
// a script of their own.
#include "render/Rainbow.h"
#include "render/SpikeProfile.h"
#include "render/SpikeRenderer.h"
#include "tests/render/RenderFixture.h"

#include <cmath>

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
    for (int round = 0; round < 2; ++round)
        for (const auto &[distance, value] : known) {
            SelectSpikeProfile(inputs);
            EXPECT_EQ(SpikeValueAt(distance), value) << distance;
        }
}

// Each input alone must clear what was remembered under the others.
TEST_F(RenderTest, SpikeMemoFollowsEveryInput) {
    const SpikeProfileInputs base{50, 50, 600000000u, 100.0, 1000};
    std::vector<SpikeProfileInputs> others(5, base);
    others[0].length = 60;
    others[1].decay = 60;
    others[2].brightness = 600000001u;
    others[3].scale = 150.0;
    others[4].diagonal = 1500;
    constexpr uint32_t kDistance = 1000, kNear = 50;
    for (const SpikeProfileInputs &other : others) {
        ResetSpikeProfile();
        SelectSpikeProfile(other);
        const uint32_t fresh = SpikeValueAt(kDistance), freshNear = SpikeValueAt(kNear);
        SelectSpikeProfile(base);
        EXPECT_EQ(SpikeValueAt(kDistance), 13753542u);
        SelectSpikeProfile(other);
        EXPECT_EQ(SpikeValueAt(kDistance), fresh);
        EXPECT_EQ(SpikeValueAt(kNear), freshNear);
        EXPECT_TRUE(fresh != 13753542u || freshNear != 600000000u);
    }
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
        const RainbowFactors factors = RainbowFactorsAt(context, c.distance);
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
        for (const uint32_t factor : RainbowFactorsAt(context, distance).factor)
            EXPECT_EQ(factor, kFractionOne);
        context.settings.rainbowIntensity = 100;
        for (const uint32_t factor : RainbowFactorsAt(context, distance).factor)
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
