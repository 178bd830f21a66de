// The render driver: stamps kept, aborts, failures and values from outside. Its pictures are held against the
// yardstick in tests/reference.
#include "render/shape/ParameterTable.h"
#include "render/stamp/StarBuilder.h"
#include "tests/render/RenderFixture.h"
#include "tests/support/StandardThreads.h"

#include <limits>

namespace {

constexpr IntRect kBounds{40, 30, 190, 140};
using Strings = std::vector<std::string>;

class DriverTest : public RenderTest {
protected:
    void SetUp() override {
        RenderTest::SetUp();
        SetImageGeometry(kBounds);
    }
    TestImage source{kModeRgb8, 1, 0, kBounds}, output{kModeRgb8, 1, 0, kBounds};
};

const std::vector<LightSource> kOneSource = {MakeSource(100, 80)};

// Effects alone without an extra plane need no copy, so that other layouts do not matter.
TEST_F(DriverTest, OnlyACopyNeedsTheSameLayout) {
    RenderSettings settings = kSettings;
    const TestImage other(kModeRgb16, 2, 1, kBounds);
    EXPECT_FALSE(Render(settings, other, {}, &output));
    EXPECT_EQ(
        TakeReportLines(),
        Strings{"153 0 16 Debug:  Unexpected Error: Programming error:  Incompatible image attributes."});
    settings.effectsOnly = true;
    output.FillRandom(6);
    EXPECT_TRUE(Render(settings, other, {}, &output));
    EXPECT_EQ(output.Bytes(), std::vector<uint8_t>(output.Bytes().size(), 0));
}

// What a change leaves as it is stays; that the rest is built anew shows in tests/reference.
TEST_F(DriverTest, StampsAreKeptWhereTheyServe) {
    RenderSettings settings = kSettings;
    ASSERT_TRUE(Render(settings, source, kOneSource, &output));
    settings.threshold = settings.colorSaturation = settings.softFlareIntensity = 70;
    settings.effectsOnly = true;
    StampContext wanted = MakeStampContext(settings);
    wanted.needsTables = gRenderState.context.needsTables;
    UpdateStamps(wanted);
    EXPECT_GT(gRenderState.stars.stamps[0].count, 0);
    settings.angle = 151; // flares have none
    UpdateStamps(MakeStampContext(settings));
    EXPECT_TRUE(gRenderState.flares.stamps[0].built);
}

std::atomic<uint8_t> gAbort;
const RenderPath *gInnerPath;
const Arm *gArmAtAbort;
int32_t gLaterArms;

// Raise the flag while the first arm or flare is laid, of the arm where it is bright.
void AbortAt(const Arm *arm, int32_t row) {
    if (std::abs(row) <= 1 && !gAbort.exchange(1))
        gArmAtAbort = arm;
    gLaterArms += gAbort && arm != gArmAtAbort;
}
void FillArmAndAbort(const ArmPiece &piece, uint32_t *values, uint16_t *states) {
    AbortAt(piece.arm, piece.row);
    gInnerPath->fillArm(piece, values, states);
}
void FillArmGlowAndAbort(const GlowPiece &piece, float *const glow[3]) {
    AbortAt(piece.arm, piece.row);
    gInnerPath->fillArmGlow(piece, glow);
}
void FillFlareAndAbort(const FlarePiece &piece, uint32_t *values) {
    gAbort = 1;
    gInnerPath->fillFlare(piece, values);
}
void FillFlareGlowAndAbort(const FlarePiece &piece, float *glow) {
    gAbort = 1;
    gInnerPath->fillFlareGlow(piece, glow);
}

TEST_F(DriverTest, AbortIsPolledBeforeEachSourceOfBothPassesAndBetweenArms) {
    RenderPath aborting{};
    gRenderPath = &aborting;
    RenderSettings settings = kSettings;
    settings.effectsOnly = true;
    settings.length = 1;                      // neither star nor flare reaches the other source
    for (int round = 0; round < 4; ++round) { // by integers or by glow, in the pass of stars or of flares
        gInnerPath = round % 2 ? path : &kPortablePath;
        aborting = *gInnerPath;
        aborting.fillArm = FillArmAndAbort;
        aborting.fillFlare = FillFlareAndAbort;
        aborting.fillArmGlow = FillArmGlowAndAbort;
        aborting.fillFlareGlow = FillFlareGlowAndAbort;
        gAbort = 0;
        gLaterArms = 0;
        settings.intensity = settings.secondaryIntensity = round < 2 ? 50 : 0;
        EXPECT_FALSE(
            Render(settings, source, {MakeSource(60, 80), MakeSource(160, 80, 1, 1)}, &output, gAbort));
        EXPECT_EQ(gLaterArms, 0);
        int64_t touched[2] = {};
        for (int32_t i = 0; i < output.buffer.planeSize; ++i)
            touched[i % output.buffer.width >= 70] += output.buffer.planes[0][i] != 0;
        EXPECT_GT(touched[0], 0); // what was blended stays
        EXPECT_EQ(touched[1], 0);
    }
    gRenderPath = path;
}

TEST_F(DriverTest, AbortBeforeOrWhileStampsAreBuiltDrawsNothing) {
    for (const bool before : {true, false}) {
        static int32_t begun;
        begun = 0;
        gAbort = before;
        gStampBuilders.star = [](StarStamp *stamp, int32_t px, int32_t py) {
            ++begun;
            gAbort = 1;
            return DrawStar(gRenderState.context, gAbort, &gRenderState.stars.tables, stamp, px, py);
        };
        source.FillRandom(3);
        EXPECT_FALSE(Render(kSettings, source, {MakeSource(100, 80), MakeSource(110, 80, 1, 1)}, &output,
                            gAbort, StandardThreads(3)));
        EXPECT_EQ(output.Bytes(), source.Bytes());
        for (const StarStamp &stamp : gRenderState.stars.stamps)
            EXPECT_EQ(stamp.count, 0);
        EXPECT_EQ(begun, before ? 0 : 1) << "the second source's phase";
    }
}

TEST_F(DriverTest, SetWithoutBuilderFailsTheRender) {
    gStampBuilders.flare = nullptr;
    EXPECT_FALSE(Render(kSettings, source, kOneSource, &output));
    EXPECT_TRUE(Render(kSettings, source, {}, &output));
    gStampBuilders.flare = flareBuilder;
    gStampBuilders.star = nullptr;
    EXPECT_FALSE(Render(kSettings, source, kOneSource, &output));
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

// The n-th allocation fails, for every n, once and from then on: the render ends well with what it has, but
// not without the room to blend anything. Every byte is accounted for, and the next render draws the whole
// picture.
TEST_F(DriverTest, EveryAllocationMayFail) {
    const std::vector<LightSource> sources = {MakeSource(100, 80, 1, 2), MakeSource(45, 33, 3, 0),
                                              MakeSource(189, 139), MakeSource(20, 90, 2, 2),
                                              MakeSource(120, 84, 1, 2)};
    TestImage whole(kModeRgb8, 1, 0, kBounds);
    ASSERT_TRUE(Render(kSettings, source, sources, &whole));
    int failures = 0;
    for (const bool andAllLater : {false, true})
        for (int64_t n = 1, made = n; made >= n; ++n) {
            FreeRenderState();
            TakeReports();
            FailAllocation(n, andAllLater);
            const bool rendered = Render(kSettings, source, sources, &output);
            EXPECT_EQ(rendered, gRenderState.colors.workers > 0);
            failures += !rendered;
            made = AllocationsMade();
            FailAllocation(0, false);
            EXPECT_EQ(BufferBytesInUse(), StateBytes() + 3 * source.buffer.pixelBytes);
            ResetRenderState();
            ASSERT_TRUE(Render(kSettings, source, sources, &output));
            ASSERT_EQ(output.Bytes(), whole.Bytes()) << n;
        }
    EXPECT_GT(failures, 1);
}

// The stamp keeps what was drawn before memory ran out; one report, and no further arm.
TEST_F(DriverTest, ExhaustedMemoryIsReportedOnceAndEndsTheStar) {
    RenderSettings settings = kSettings;
    settings.effectType = kNorthStar; // arms of two lengths, two tables
    settings.secondaryIntensity = 100;
    const StampContext context = MakeStampContext(settings);
    for (int64_t n = 1; n <= 6; ++n) {
        StarStamp stamp{};
        StarTables tables{};
        BeginStars(context, &tables);
        FailAllocation(n, true);
        ForgetLowMemory();
        for (int times = 0; times < 2; ++times) // told once
            EXPECT_FALSE(DrawStar(context, std::atomic<uint8_t>{0}, &tables, &stamp, 1, 3));
        EXPECT_EQ(stamp.count, n < 4 ? 0 : n == 4 ? 1 : n == 5 ? 18 : 19) << n;
        FailAllocation(0, false);
        EXPECT_EQ(TakeReportLines(), Strings{"237 1 48 Warning: Low memory.  Check image - some effects may "
                                             "not be rendered."});
        FreeStamp(&stamp);
        DropStarTables(&tables);
    }
}

// Memory, and the time to fill it.
TEST_F(DriverTest, ArmsOfOneFallOffShareATable) {
    RenderSettings settings = kSettings;
    settings.secondaryIntensity = 0;
    ASSERT_TRUE(Render(settings, source, kOneSource, &output));
    EXPECT_EQ(gRenderState.stars.tables.count, 1);
    static int started;
    started = 0;
    WorkerThreads threads = StandardThreads(3);
    threads.start = [](const WorkerTask *task) { return (++started, StandardThreads(3).start(task)); };
    ASSERT_TRUE(Render(settings, source, kOneSource, &output, std::atomic<uint8_t>{0}, threads));
    EXPECT_EQ(started, 2);
    EXPECT_EQ(gRenderState.colors.workers, 3) << "one set of colours was there";
}

TEST_F(DriverTest, ClampedSettingsAreInRange) {
    constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
    const struct {
        RenderSettings wild, clamped;
    } cases[] = {{{kNoNumber, -1, 101, -25536, 32767, 0, -7, -32768, 107, 107, -1, 500, true, 0x65665437},
                  {100.0, 0, 100, 0, 900, 1, 0, -100, 100, 100, 0, 100, true, kStandardStar}},
                 {{0.5, 101, -1, 101, -901, 33, 101, 101, -1, -1, 101, -1, false, 7},
                  {100.0, 100, 0, 100, -900, 32, 100, 100, 0, 0, 100, 0, false, kStandardStar}},
                 {kSettings, kSettings}};
    const auto bytes = [](const RenderSettings &s) { // up to the padding after the flag
        return std::string(reinterpret_cast<const char *>(&s), offsetof(RenderSettings, effectsOnly) + 1);
    };
    for (const auto &c : cases) {
        RenderSettings s = c.wild;
        ClampRenderSettings(&s);
        EXPECT_EQ(bytes(s), bytes(c.clamped)) << &c - cases;
        EXPECT_EQ(s.effectType, c.clamped.effectType);
    }
    for (const double bad : {-100.0, 100001.0, std::numeric_limits<double>::infinity()}) {
        RenderSettings s = kSettings;
        s.scale = bad;
        ClampRenderSettings(&s);
        EXPECT_EQ(s.scale, 100.0);
    }
}

} // namespace
