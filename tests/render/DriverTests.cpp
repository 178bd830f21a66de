// The render driver: stamps kept, aborts, failures and values from outside. Its pictures are held against the
// yardsticks in tests/reference.
#include "render/stamp/StarBuilder.h"
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

// Effects alone without an extra plane need no copy, so that other layouts do not matter.
TEST_F(DriverTest, EffectsOnlyNeedsNoCopy) {
    RenderSettings settings = DefaultSettings();
    settings.effectsOnly = true;
    std::vector<LightSource> none;
    TestImage source(kModeRgb16, 1, kBounds), flat(kModeRgb8, 0, kBounds);
    FillRandom(&flat, 6);
    EXPECT_TRUE(Render(settings, source, none, &flat));
    EXPECT_EQ(flat.Bytes(), std::vector<uint8_t>(flat.Bytes().size(), 0));
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

// Stand-ins for the builders: one bright entry at the source's pixel. For a star it is an arm of one step,
// too narrow to cover its neighbours.
bool BuildDot(StarStamp *stamp, int32_t, int32_t) {
    static uint32_t full[] = {kFractionOne, kFractionOne};
    static const ValueTable values = [] {
        ValueTable table{full, 2, {}};
        std::fill(std::begin(table.reach), std::end(table.reach), 2u);
        return table;
    }();
    if (!AddArm(gRenderState.context, &gRenderState.stars.tables, 0, 0, {0.5, 0.5, 1800, 50, 50, 600000000u},
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

// What a change leaves as it is stays; that the rest is built anew shows in tests/reference.
TEST_F(DriverTest, StampsAreKeptWhereTheyServe) {
    const struct {
        const char *what;
        void (*change)(RenderSettings *settings);
        bool starsKept;
    } cases[] = {
        {"threshold", [](RenderSettings *s) { s->threshold = 70; }, true},
        {"saturation", [](RenderSettings *s) { s->colorSaturation = 70; }, true},
        {"flare", [](RenderSettings *s) { s->softFlareIntensity = 70; }, true},
        {"effects only", [](RenderSettings *s) { s->effectsOnly = true; }, true},
        {"angle", [](RenderSettings *s) { s->angle = 151; }, false},
        {"rainbow", [](RenderSettings *s) { s->rainbowFrequency = 51; }, false},
    };
    std::vector<LightSource> sources = {MakeSource(100, 80)};
    TestImage source(kModeRgb8, 0, kBounds), output(kModeRgb8, 0, kBounds);
    for (const auto &c : cases) {
        SetUp();
        RenderSettings settings = DefaultSettings();
        ASSERT_TRUE(Render(settings, source, sources, &output));
        c.change(&settings);
        UpdateStamps(settings);
        EXPECT_EQ(gRenderState.stars.stamps[0].count > 0, c.starsKept) << c.what;
        EXPECT_TRUE(gRenderState.flares.stamps[0].built) << c.what;
    }
}

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

const Arm *gArmAtAbort;
int32_t gLaterArms;

void FillArmAndWatch(const ArmPiece &piece, uint32_t *values, uint16_t *states) {
    if (gTestAbort == 0)
        gArmAtAbort = piece.arm;
    gTestAbort = 1;
    gLaterArms += piece.arm != gArmAtAbort;
    gInnerPath->fillArm(piece, values, states);
}

// A large star is left between two of its arms.
TEST_F(DriverTest, AbortIsPolledBeforeEachArm) {
    gInnerPath = path;
    RenderPath watching = *path;
    watching.fillArm = FillArmAndWatch;
    gRenderPath = &watching;
    gTestAbort = 0;
    gLaterArms = 0;
    std::vector<LightSource> sources = {MakeSource(100, 80)};
    TestImage output(kModeRgb8, 0, kBounds);
    EXPECT_FALSE(
        RenderEffect(DefaultSettings(), output.buffer, kBounds, ViewOf(sources), gTestAbort, &output.buffer));
    EXPECT_EQ(gTestAbort, 1);
    EXPECT_EQ(gLaterArms, 0);
    gRenderPath = path;
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

// The stamp keeps what was drawn before memory ran out; one report, and no further arm.
TEST_F(DriverTest, ExhaustedMemoryIsReportedOnceAndEndsTheStar) {
    RenderSettings settings = DefaultSettings();
    settings.effectType = kNorthStar; // arms of two lengths, two tables
    settings.secondaryIntensity = 100;
    const StampContext context = MakeStampContext(settings);
    for (int64_t n = 1; n <= 7; ++n) {
        StarStamp stamp{};
        StarTables tables{};
        BeginStars(context, &tables);
        FailAllocation(n, true);
        EXPECT_FALSE(DrawStar(context, noAbort, &tables, &stamp, 1, 3));
        EXPECT_EQ(stamp.count, n < 5 ? 0 : n == 5 ? 1 : n == 6 ? 18 : 19) << n;
        FailAllocation(0, false);
        const auto reports = TakeReports();
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].record.line, 237u);
        EXPECT_EQ(reports[0].record.kind, kUserMessage);
        EXPECT_EQ(reports[0].messageBoxFlags, kWarningIcon);
        EXPECT_EQ(reports[0].title, "Warning");
        EXPECT_EQ(reports[0].message, "Low memory.  Check image - some effects may not be rendered.");
        FreeStamp(&stamp);
        DropStarTables(&tables);
    }
}

// Arms of one fall-off share its table: memory, and the time to fill it.
TEST_F(DriverTest, ArmsOfOneFallOffShareATable) {
    std::vector<LightSource> sources = ScatteredSources();
    RenderSettings settings = DefaultSettings();
    settings.secondaryIntensity = 0;
    TestImage source(kModeRgb8, 0, kBounds), output(kModeRgb8, 0, kBounds);
    ASSERT_TRUE(Render(settings, source, sources, &output));
    EXPECT_EQ(gRenderState.stars.tables.count, 1);
}

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
