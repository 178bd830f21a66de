// The render driver: which sources are drawn, where and onto what; when stamps are rebuilt; tiles, aborts and
// failures.
#include "tests/render/RenderFixture.h"
#include "tests/support/StandardThreads.h"

namespace {

constexpr IntRect kBounds{40, 30, 190, 140};

class DriverTest : public RenderTest {
protected:
    void SetUp() override {
        RenderTest::SetUp();
        SetImageGeometry(kBounds);
    }
};

std::vector<LightSource> ScatteredSources() {
    std::vector<LightSource> sources = {MakeSource(100, 80, 1, 2), MakeSource(45, 33, 3, 0),
                                        MakeSource(189, 139), MakeSource(20, 90, 2, 2),
                                        MakeSource(120, 84, 1, 2)};
    sources[1].Red = 0x30000000;
    sources[2].Green = 0x20000000;
    sources[4].Intensity = 0x20000000;
    return sources;
}

// The same picture in one piece and in small tiles, in every depth, with transparency and for the effects
// alone.
TEST_F(DriverTest, TilesNeverShow) {
    RenderSettings settings = DefaultSettings();
    settings.secondaryIntensity = 60;
    std::vector<LightSource> sources = ScatteredSources();
    for (const int32_t mode : kAllModes) {
        gFloor = FloorForBytesPerSample(BytesOfMode(mode));
        settings.effectsOnly = mode == kModeRgb8 || mode == kModeGray32;
        gPreciseMode = mode != kModeRgb8;
        const int32_t transparency = mode == kModeGray8 || mode == kModeRgb8;
        TestImage source(mode, transparency, kBounds), whole(mode, transparency, kBounds);
        FillRandom(&source, 7);
        ASSERT_TRUE(Render(settings, source, sources, &whole));
        EXPECT_NE(std::memcmp(whole.buffer.pixels, source.buffer.pixels, whole.Bytes().size()), 0);
        const int64_t sampleBytes = whole.buffer.bytesPerSample;
        for (int32_t top = kBounds.top; top < kBounds.bottom; top += 29)
            for (int32_t left = kBounds.left; left < kBounds.right; left += 37) {
                const IntRect tile = IntersectRects({left, top, left + 37, top + 29}, kBounds);
                TestImage part(mode, transparency, tile);
                ASSERT_TRUE(Render(settings, source, sources, &part));
                for (int32_t plane = 0; plane < PlaneCount(whole.buffer); ++plane)
                    for (int32_t y = tile.top; y < tile.bottom; ++y)
                        ASSERT_EQ(std::memcmp(part.buffer.planes[plane] + part.Index(left, y) * sampleBytes,
                                              whole.buffer.planes[plane] + whole.Index(left, y) * sampleBytes,
                                              static_cast<size_t>(part.buffer.width * sampleBytes)),
                                  0)
                            << mode << " plane " << plane << " row " << y << " tile " << left;
            }
    }
}

TEST_F(DriverTest, UntouchedSamplesComeBackBitForBit) {
    std::vector<LightSource> sources = {MakeSource(100, 80)};
    sources[0].State = 0;
    for (const int32_t mode : kAllModes) {
        TestImage source(mode, 1, kBounds), output(mode, 1, kBounds);
        FillRandom(&source, 3);
        ASSERT_TRUE(Render(DefaultSettings(), source, sources, &output));
        EXPECT_EQ(output.Bytes(), source.Bytes());
    }
}

TEST_F(DriverTest, EffectsOnlyIsBlackAndKeepsTransparency) {
    RenderSettings settings = DefaultSettings();
    settings.effectsOnly = true;
    std::vector<LightSource> none;
    TestImage source(kModeRgb16, 1, kBounds), output(kModeRgb16, 1, kBounds);
    FillRandom(&source, 5);
    FillRandom(&output, 6);
    ASSERT_TRUE(Render(settings, source, none, &output));
    for (int64_t i = 0; i < output.buffer.planeSize; ++i) {
        for (int plane = 0; plane < 3; ++plane)
            ASSERT_EQ(reinterpret_cast<uint16_t *>(output.buffer.planes[plane])[i], 0);
        ASSERT_EQ(reinterpret_cast<uint16_t *>(output.buffer.planes[3])[i],
                  reinterpret_cast<uint16_t *>(source.buffer.planes[3])[i]);
    }
    // Without an extra plane nothing is copied, so that other layouts do not matter.
    TestImage flat(kModeRgb8, 0, kBounds);
    FillRandom(&flat, 6);
    EXPECT_TRUE(Render(settings, source, none, &flat));
    EXPECT_EQ(flat.Bytes(), std::vector<uint8_t>(flat.Bytes().size(), 0));
    EXPECT_TRUE(TakeReports().empty());
}

TEST_F(DriverTest, DifferentLayoutsAreReported) {
    std::vector<LightSource> none;
    TestImage source(kModeRgb8, 0, kBounds), output(kModeRgb16, 0, kBounds);
    EXPECT_FALSE(Render(DefaultSettings(), source, none, &output));
    const auto reports = TakeReports();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].title, "Debug:  Unexpected Error");
    EXPECT_EQ(reports[0].message, "Programming error:  Incompatible image attributes.");
}

// --- Which sources, and where
// ----------------------------------------------------------------------------------

// Stand-ins for the builders: one bright entry at the source's pixel. For a star it is an arm of one step,
// too narrow to cover its neighbours.
bool BuildDot(StarStamp *stamp, int32_t, int32_t) {
    static uint32_t full[] = {kFractionOne, kFractionOne};
    static const ValueTable values = [] {
        ValueTable table{full, 2, {}};
        std::fill(std::begin(table.reach), std::end(table.reach), 2u);
        return table;
    }();
    if (!AddArm(gRenderState.context, &gRenderState.stars.tables, 0, 0, {1800, 0.5, 0.5, 50, 50, 600000000u},
                stamp))
        return false;
    Arm &arm = stamp->arms[0];
    arm.walked = {0, 0};
    arm.slope = arm.crossing = 0.0;
    arm.halfWidth = -2.0;
    arm.edgeSlope = 0.5;
    arm.values = &values;
    return true;
}

bool BuildFlareDot(FlareStamp *stamp, int32_t px, int32_t py) {
    static uint32_t none = 0;
    gRenderState.flares.values = ValueTable{&none, 1, {}};
    *stamp = FlareStamp{true, px, py, 0, kFractionOne, true};
    return true;
}

// Which pixels of the output are not black after a render of dots.
std::vector<std::pair<int32_t, int32_t>> RenderDots(RenderSettings settings,
                                                    std::vector<LightSource> sources) {
    settings.softFlareIntensity = 0;
    settings.effectsOnly = true;
    ResetRenderState();
    gRenderState.stars.build = BuildDot;
    TestImage output(kModeRgb32, 0, {0, 0, 300, 200});
    EXPECT_TRUE(Render(settings, output, sources, &output));
    std::vector<std::pair<int32_t, int32_t>> lit;
    for (int32_t y = 0; y < 200; ++y)
        for (int32_t x = 0; x < 300; ++x)
            if (output.At<float>(0, x, y) != 0.0f)
                lit.emplace_back(x, y);
    return lit;
}

TEST_F(DriverTest, ThresholdStateAndIntensitySelectSources) {
    std::vector<LightSource> sources;
    for (int32_t i = 0; i < 6; ++i)
        sources.push_back(MakeSource(10 + i, 7));
    sources[0].Brightness = 1073741823; // the cut level at Threshold 50: not above it
    sources[1].Brightness = 1073741824;
    sources[2].State = 0;
    sources[3].State = 2;
    sources[3].Brightness = 0;
    sources[4].Intensity = kFloor8Bit; // not above the floor
    sources[5].Intensity = 0x40000000;
    RenderSettings settings = DefaultSettings();
    using Lit = std::vector<std::pair<int32_t, int32_t>>;
    EXPECT_EQ(RenderDots(settings, sources), (Lit{{11, 7}, {13, 7}, {15, 7}}));
    settings.threshold = 100;
    EXPECT_EQ(RenderDots(settings, sources), (Lit{{10, 7}, {11, 7}, {13, 7}, {15, 7}}));
    settings.threshold = 0;
    EXPECT_EQ(RenderDots(settings, sources), (Lit{{13, 7}}));
    settings.threshold = 100;
    settings.intensity = 0;
    EXPECT_FALSE(RenderDots(settings, sources).empty()); // secondary spikes alone
    settings.secondaryIntensity = 0;
    EXPECT_TRUE(RenderDots(settings, sources).empty());
}

TEST_F(DriverTest, ZoomMovesSourcesToScaledPixels) {
    using Lit = std::vector<std::pair<int32_t, int32_t>>;
    RenderSettings settings = DefaultSettings();
    settings.scale = 200.0;
    EXPECT_EQ(RenderDots(settings, {MakeSource(100, 0, 3, 3)}), (Lit{{201, 1}}));
    settings.scale = 50.0;
    EXPECT_EQ(RenderDots(settings, {MakeSource(100, 61)}), (Lit{{50, 30}}));
    settings.scale = 33.3;
    EXPECT_EQ(RenderDots(settings, {MakeSource(600, 300)}), (Lit{{199, 100}}));
    settings.scale = 100000.0;
    EXPECT_TRUE(RenderDots(settings, {MakeSource(2147483647, -2147483647 - 1)}).empty());
}

// The phases choose the stamp: px × 4 + py.
TEST_F(DriverTest, PhasesChooseTheStamp) {
    RenderDots(DefaultSettings(), {MakeSource(20, 20, 2, 1), MakeSource(30, 20, 1, 3)});
    for (int32_t i = 0; i < kStampsPerSet; ++i)
        EXPECT_EQ(gRenderState.stars.stamps[i].count, i == 9 || i == 7) << i;
}

TEST_F(DriverTest, FlareIsWeakerThanTheStarByItsShare) {
    RenderSettings settings = DefaultSettings();
    settings.intensity = settings.secondaryIntensity = 0;
    settings.softFlareIntensity = 10;
    settings.colorSaturation = 0;
    settings.effectsOnly = true;
    gRenderState.flares.build = BuildFlareDot;
    std::vector<LightSource> sources = {MakeSource(100, 80)};
    sources[0].Intensity = 100000000; // × 0.01 = 999999 after truncation
    TestImage output(kModeRgb32, 0, kBounds);
    ASSERT_TRUE(Render(settings, output, sources, &output));
    // Alpha is the strength × 256 as a fraction; red's tint is full.
    EXPECT_NEAR(output.At<float>(0, 100, 80), 999998.0 * 256.0 / 4294967296.0, 2e-7);
    sources[0].Intensity =
        static_cast<uint32_t>(kFloor8Bit) * 100; // the share brings it just below the floor
    ASSERT_TRUE(Render(settings, output, sources, &output));
    EXPECT_EQ(output.At<float>(0, 100, 80), 0.0f);
    gRenderState.flares.values = ValueTable{};
}

// --- Stamps kept and rebuilt
// ------------------------------------------------------------------------------------

struct Invalidation {
    const char *what;
    void (*change)(RenderSettings *settings);
    bool starsKept, flaresKept;
};

TEST_F(DriverTest, ChangesRebuildOnlyWhatDependsOnThem) {
    const Invalidation cases[] = {
        {"nothing", [](RenderSettings *) {}, true, true},
        {"threshold", [](RenderSettings *s) { s->threshold = 70; }, true, true},
        {"saturation", [](RenderSettings *s) { s->colorSaturation = 70; }, true, true},
        {"flare", [](RenderSettings *s) { s->softFlareIntensity = 70; }, true, true},
        {"effects only", [](RenderSettings *s) { s->effectsOnly = true; }, true, true},
        {"intensity", [](RenderSettings *s) { s->intensity = 51; }, false, true},
        {"angle", [](RenderSettings *s) { s->angle = 151; }, false, true},
        {"points", [](RenderSettings *s) { s->numberOfPoints = 7; }, false, true},
        {"sharpness", [](RenderSettings *s) { s->spikeSharpness = 51; }, false, true},
        {"rainbow intensity", [](RenderSettings *s) { s->rainbowIntensity = 51; }, false, true},
        {"rainbow frequency", [](RenderSettings *s) { s->rainbowFrequency = 51; }, false, true},
        {"secondary", [](RenderSettings *s) { s->secondaryIntensity = 16; }, false, true},
        {"type", [](RenderSettings *s) { s->effectType = kNorthStar; }, false, true},
        {"length", [](RenderSettings *s) { s->length = 51; }, false, false},
        {"scale", [](RenderSettings *s) { s->scale = 101.0; }, false, false},
        {"precision", [](RenderSettings *) { gPreciseMode = false; }, false, false},
        {"floor", [](RenderSettings *) { gFloor = kFloor16Bit; }, false, false},
        {"diagonal",
         [](RenderSettings *) {
             SetImageGeometry({40, 30, 190, 141});
         },
         false, false},
    };
    std::vector<LightSource> sources = {MakeSource(100, 80)};
    TestImage source(kModeRgb8, 0, kBounds), output(kModeRgb8, 0, kBounds);
    for (const Invalidation &c : cases) {
        SetUp();
        RenderSettings settings = DefaultSettings();
        ASSERT_TRUE(Render(settings, source, sources, &output));
        ASSERT_GT(gRenderState.stars.stamps[0].count, 0);
        ASSERT_TRUE(gRenderState.flares.stamps[0].built);
        c.change(&settings);
        UpdateStamps(settings);
        EXPECT_EQ(gRenderState.stars.stamps[0].count > 0, c.starsKept) << c.what;
        EXPECT_EQ(gRenderState.flares.stamps[0].built, c.flaresKept) << c.what;
    }
}

// A change and back again draws the same picture as a first render: nothing stale is left in any memo.
TEST_F(DriverTest, StateLeavesNoTrace) {
    std::vector<LightSource> sources = ScatteredSources();
    RenderSettings first = DefaultSettings(), other = DefaultSettings();
    other.length = 80;
    other.intensity = 70;
    other.effectType = kHollywoodStar;
    TestImage source(kModeRgb8, 0, kBounds), fresh(kModeRgb8, 0, kBounds), later(kModeRgb8, 0, kBounds);
    FillRandom(&source, 11);
    ASSERT_TRUE(Render(first, source, sources, &fresh));
    ASSERT_TRUE(Render(other, source, sources, &later));
    EXPECT_NE(later.Bytes(), fresh.Bytes());
    SetImageGeometry({0, 0, 900, 900});
    ASSERT_TRUE(Render(first, source, sources, &later));
    EXPECT_NE(later.Bytes(), fresh.Bytes());
    SetImageGeometry(kBounds);
    ASSERT_TRUE(Render(first, source, sources, &later));
    EXPECT_EQ(later.Bytes(), fresh.Bytes());
    FreeRenderState();
    EXPECT_EQ(BufferBytesInUse(), later.buffer.pixelBytes * 3);
    ASSERT_TRUE(Render(first, source, sources, &later));
    EXPECT_EQ(later.Bytes(), fresh.Bytes());
}

// --- Aborts and failures
// ----------------------------------------------------------------------------------------

std::atomic<uint8_t> gTestAbort{0};
const RenderPath *gInnerPath;

// Raises the flag while the first source is laid.
void FillArmAndAbort(const ArmPiece &piece, uint32_t *values, uint16_t *states) {
    gTestAbort = 1;
    gInnerPath->fillArm(piece, values, states);
}
void FillFlareAndAbort(const FlarePiece &piece, uint32_t *values) {
    gTestAbort = 1;
    gInnerPath->fillFlare(piece, values);
}

TEST_F(DriverTest, AbortIsPolledBeforeEachSourceOfBothPasses) {
    gInnerPath = path;
    static RenderPath aborting;
    aborting = *path;
    aborting.fillArm = FillArmAndAbort;
    aborting.fillFlare = FillFlareAndAbort;
    gRenderPath = &aborting;
    for (const bool flarePass : {false, true}) {
        SetUp();
        gTestAbort = 0;
        RenderSettings settings = DefaultSettings();
        settings.effectsOnly = true;
        if (flarePass)
            settings.intensity = settings.secondaryIntensity = 0;
        gRenderState.stars.build = BuildDot;
        gRenderState.flares.build = BuildFlareDot;
        std::vector<LightSource> sources = {MakeSource(100, 80), MakeSource(110, 80)};
        TestImage output(kModeRgb8, 0, kBounds);
        EXPECT_FALSE(
            RenderEffect(settings, output.buffer, kBounds, ViewOf(sources), gTestAbort, &output.buffer));
        EXPECT_NE(output.At<uint8_t>(0, 100, 80), 0); // what was blended stays
        EXPECT_EQ(output.At<uint8_t>(0, 110, 80), 0);
        gRenderState.flares.values = ValueTable{};
    }
}

bool BuildDotAndAbort(StarStamp *stamp, int32_t px, int32_t py) {
    gTestAbort = 1;
    return BuildDot(stamp, px, py);
}

TEST_F(DriverTest, AbortWhileStampsAreBuiltDrawsNothing) {
    gTestAbort = 0;
    gRenderState.stars.build = BuildDotAndAbort;
    std::vector<LightSource> sources = {MakeSource(100, 80), MakeSource(110, 80, 1, 1)};
    TestImage source(kModeRgb8, 0, kBounds), output(kModeRgb8, 0, kBounds);
    FillRandom(&source, 3);
    EXPECT_FALSE(
        RenderEffect(DefaultSettings(), source.buffer, kBounds, ViewOf(sources), gTestAbort, &output.buffer));
    EXPECT_EQ(output.Bytes(), source.Bytes());
    EXPECT_EQ(gRenderState.stars.stamps[5].count, 0); // the second source's phase was not begun
}

// A flag that was raised before the render.
TEST_F(DriverTest, RaisedAbortBuildsNothing) {
    gTestAbort = 1;
    std::vector<LightSource> sources = {MakeSource(100, 80)};
    TestImage output(kModeRgb8, 0, kBounds);
    EXPECT_FALSE(RenderEffect(DefaultSettings(), output.buffer, kBounds, ViewOf(sources), gTestAbort,
                              &output.buffer, StandardThreads(3)));
    EXPECT_EQ(gRenderState.stars.stamps[0].count, 0);
}

// Any number of workers, more than there are rows too.
TEST_F(DriverTest, WorkersNeverShow) {
    std::vector<LightSource> sources = ScatteredSources();
    TestImage source(kModeRgb16, 0, kBounds), alone(kModeRgb16, 0, kBounds), shared(kModeRgb16, 0, kBounds);
    FillRandom(&source, 9);
    ASSERT_TRUE(Render(DefaultSettings(), source, sources, &alone));
    for (const int32_t workers : {-1, 0, 2, 3, 5, 16, 1000}) {
        ASSERT_TRUE(RenderEffect(DefaultSettings(), source.buffer, kBounds, ViewOf(sources), noAbort,
                                 &shared.buffer, StandardThreads(workers)));
        ASSERT_EQ(shared.Bytes(), alone.Bytes()) << workers;
    }
}

TEST_F(DriverTest, SetWithoutBuilderFailsTheRender) {
    std::vector<LightSource> sources = {MakeSource(100, 80)}, none;
    TestImage source(kModeRgb8, 0, kBounds), output(kModeRgb8, 0, kBounds);
    gRenderState.flares.build = nullptr;
    EXPECT_FALSE(Render(DefaultSettings(), source, sources, &output));
    EXPECT_TRUE(Render(DefaultSettings(), source, none, &output));
    gRenderState.flares.build = flareBuilder;
    gRenderState.stars.build = nullptr;
    EXPECT_FALSE(Render(DefaultSettings(), source, sources, &output));
    EXPECT_TRUE(TakeReports().empty());
}

int64_t StateBytes() {
    const StarSet &stars = gRenderState.stars;
    int64_t bytes = static_cast<int64_t>(ColorBytes(gRenderState.colors.workers));
    bytes += TableBytes(stars.tables) + gRenderState.flares.values.count * int64_t{sizeof(uint32_t)};
    for (const StarStamp &stamp : stars.stamps)
        bytes += StampBytes(stamp);
    return bytes;
}

// The n-th allocation fails, for every n, once and from then on: the render still ends well, every byte is
// accounted for, and the next render draws the whole picture.
TEST_F(DriverTest, EveryAllocationMayFail) {
    std::vector<LightSource> sources = ScatteredSources();
    TestImage source(kModeRgb8, 0, kBounds), whole(kModeRgb8, 0, kBounds), output(kModeRgb8, 0, kBounds);
    ASSERT_TRUE(Render(DefaultSettings(), source, sources, &whole));
    for (const bool andAllLater : {false, true})
        for (int64_t n = 1, made = n; made >= n; ++n) {
            FreeRenderState();
            TakeReports();
            FailAllocation(n, andAllLater);
            EXPECT_TRUE(Render(DefaultSettings(), source, sources, &output));
            made = AllocationsMade();
            FailAllocation(0, false);
            EXPECT_EQ(BufferBytesInUse(), StateBytes() + 3 * source.buffer.pixelBytes);
            ResetRenderState();
            ASSERT_TRUE(Render(DefaultSettings(), source, sources, &output));
            ASSERT_EQ(output.Bytes(), whole.Bytes()) << n;
        }
}

// --- Values from outside
// ----------------------------------------------------------------------------------------

TEST_F(DriverTest, ClampedSettingsAreInRange) {
    RenderSettings s{};
    std::memset(&s, 0, sizeof s);
    s.scale = std::numeric_limits<double>::quiet_NaN();
    s.threshold = -1;
    s.length = 40000 - 65536;
    s.angle = 32767;
    s.colorSaturation = -32768;
    s.rainbowFrequency = 107;
    s.effectType = 0x65665437;
    ClampRenderSettings(&s);
    EXPECT_EQ(s.scale, 100.0);
    EXPECT_EQ(s.threshold, 0);
    EXPECT_EQ(s.length, 0);
    EXPECT_EQ(s.angle, 900);
    EXPECT_EQ(s.colorSaturation, -100);
    EXPECT_EQ(s.rainbowFrequency, 100);
    EXPECT_EQ(s.numberOfPoints, 1);
    EXPECT_EQ(s.effectType, kStandardStar);
    RenderSettings same = DefaultSettings();
    ClampRenderSettings(&same);
    EXPECT_EQ(same.length, 50);
    EXPECT_EQ(same.angle, 150);
    EXPECT_EQ(same.colorSaturation, 30);
    for (const double bad : {0.5, -100.0, 100001.0, std::numeric_limits<double>::infinity()}) {
        same.scale = bad;
        ClampRenderSettings(&same);
        EXPECT_EQ(same.scale, 100.0);
    }
}

// Wild settings, pictures and sources only have to end, without a fault that a sanitizer sees.
TEST_F(DriverTest, WildValuesAreHarmless) {
    std::mt19937 random(20240611);
    const auto wild = [&] {
        constexpr int16_t kValues[] = {-32768, -101, -1, 0, 1, 50, 100, 107, 32767};
        return kValues[random() % 9];
    };
    for (int round = 0; round < 150; ++round) {
        const IntRect bounds{0, 0, 1 + static_cast<int32_t>(random() % 40),
                             1 + static_cast<int32_t>(random() % 3)};
        const int32_t mode = kAllModes[random() % 6];
        SetImageGeometry(bounds);
        gPreciseMode = random() % 2;
        gFloor = FloorForBytesPerSample(BytesOfMode(mode));
        RenderSettings s{random() % 4 == 0 ? 1.0 : 100.0,
                         wild(),
                         wild(),
                         wild(),
                         wild(),
                         wild(),
                         wild(),
                         wild(),
                         wild(),
                         wild(),
                         wild(),
                         wild(),
                         random() % 2 == 0,
                         kStandardStar + static_cast<uint32_t>(random() % 9)};
        std::vector<LightSource> sources = {MakeSource(0, 0, -1, 77), MakeSource(3, 1, 2, 2),
                                            MakeSource(2147483647, -2147483647 - 1)};
        TestImage source(mode, 0, bounds), output(mode, 0, bounds);
        FillRandom(&source, static_cast<uint32_t>(round));
        EXPECT_TRUE(Render(s, source, sources, &output));
    }
}

} // namespace
