// One arm: its walk, its rows, what it leaves out, and what happens when memory runs out.
#include "render/StarBuilder.h"
#include "tests/plain/StampEntries.h"
#include "tests/render/RenderFixture.h"

#include <algorithm>
#include <cmath>

namespace {

using plain::StampEntry;

class ArmTest : public RenderTest {
protected:
    void SetUp() override {
        RenderTest::SetUp();
        UseContext(DefaultSettings());
    }
    void TearDown() override {
        FreeStamp(&stamp);
        DropStarTables(&tables);
        RenderTest::TearDown();
    }
    ArmShape Shape(int32_t angle) const { return {angle, 0.25, 0.5, 50, 50, 600000000u}; }
    void UseContext(const RenderSettings &settings) {
        EmptyStamp(&stamp);
        DropStarTables(&tables);
        context = MakeStampContext(settings);
        BeginStars(context, &tables);
    }
    bool Draw(const ArmShape &arm, int32_t px = 0, int32_t py = 0) {
        return AddArm(context, &tables, px, py, arm, &stamp);
    }
    bool DrawWholeStar() { return DrawStar(context, noAbort, &tables, &stamp, 1, 3); }
    std::vector<StampEntry> Entries() const { return EntriesOf(context, stamp, tables); }
    // What single arms of the stamp draw.
    std::vector<StampEntry> EntriesOfArms(int32_t from, int32_t count) const {
        return EntriesOf(context, StarStamp{count, {}, stamp.arms + from}, tables);
    }
    // How many entries lie in the row or column of the centre.
    int64_t CentreRow(int16_t StampEntry::*axis) const {
        const auto entries = Entries();
        return std::count_if(entries.begin(), entries.end(),
                             [&](const StampEntry &e) { return e.*axis == 0; });
    }
    StampContext context;
    StarStamp stamp{};
    StarTables tables{};
};

bool Same(const std::vector<StampEntry> &a, const std::vector<StampEntry> &b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(StampEntry)) == 0;
}

IntRect BoxOf(const std::vector<StampEntry> &entries) {
    IntRect box{0, 0, 0, 0};
    for (const StampEntry &e : entries)
        box = {std::min<int32_t>(box.left, e.dx), std::min<int32_t>(box.top, e.dy),
               std::max(box.right, e.dx + 1), std::max(box.bottom, e.dy + 1)};
    return box;
}

TEST_F(ArmTest, OnlyThePositiveOfTwoOppositeArmsDrawsTheCentreRow) {
    const struct {
        int32_t angle;
        int16_t StampEntry::*axis;
        bool drawsCentre;
        bool positive;
    } cases[] = {{0, &StampEntry::dy, false, false},
                 {1800, &StampEntry::dy, true, true},
                 {900, &StampEntry::dx, true, true},
                 {2700, &StampEntry::dx, false, false}};
    for (const auto &c : cases) {
        EmptyStamp(&stamp);
        ASSERT_TRUE(Draw(Shape(c.angle)));
        ASSERT_GT(Entries().size(), 20u);
        EXPECT_EQ(CentreRow(c.axis) > 0, c.drawsCentre) << c.angle;
        for (const StampEntry &entry : Entries())
            EXPECT_TRUE(c.positive ? entry.*c.axis >= 0 : entry.*c.axis < 0) << c.angle;
    }
}

TEST_F(ArmTest, RowsReachAsFarAsTheirEdges) {
    ASSERT_TRUE(Draw(Shape(1800))); // edge slope a quarter: coverage ends 1 + 8 quarters from the centre line
    const auto entries = Entries();
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(entries[i].dx, i % 5 - 2) << i;
        EXPECT_EQ(entries[i].dy, i / 5) << i;
    }
    // The flat part, at a coverage of 0.5625 to the power 1.6.
    EXPECT_EQ(entries[2].value, 238972151u);
}

// At exactly 45 degrees the components are equal or nearly so, and the x axis is the major one: columns, not
// rows.
TEST_F(ArmTest, DiagonalWalksAlongX) {
    ASSERT_TRUE(Draw(Shape(450)));
    EXPECT_FALSE(stamp.arms[0].majorIsY);
    EXPECT_EQ(stamp.arms[0].walked.from, 0);
}

TEST_F(ArmTest, WideArmsEndAtTheLimitsOnBothSides) {
    SetImageGeometry({0, 0, 12, 9});
    gFloor = 4;
    UseContext(DefaultSettings());
    ArmShape arm = Shape(1800);
    arm.sharpnessFactor = 0.001;
    ASSERT_TRUE(Draw(arm));
    const auto entries = Entries();
    EXPECT_EQ(entries.size(), 25u * 10u); // columns -12..12, rows 0..9
    const IntRect box = BoxOf(entries);
    EXPECT_EQ(box.left, -12);
    EXPECT_EQ(box.right, 13);
    EXPECT_EQ(box.top, 0);
    EXPECT_EQ(box.bottom, 10);
}

TEST_F(ArmTest, AnglesAreReducedAndPhasesShiftTheArm) {
    ASSERT_TRUE(Draw(Shape(-1), 1, 2));
    const auto reduced = Entries();
    EmptyStamp(&stamp);
    ASSERT_TRUE(Draw(Shape(3599 + 3 * 3600), 1, 2));
    EXPECT_TRUE(Same(Entries(), reduced));
    // Down the pixel column with phase 2 of 4 the two neighbours to the right and left differ.
    EmptyStamp(&stamp);
    ASSERT_TRUE(Draw(Shape(1800), 2, 0));
    uint32_t left = 0, right = 0;
    for (const StampEntry &entry : Entries()) {
        if (entry.dy == 8 && entry.dx == -1)
            left = entry.value;
        if (entry.dy == 8 && entry.dx == 1)
            right = entry.value;
    }
    EXPECT_LT(left, right);
}

TEST_F(ArmTest, NothingBelowTheFloorIsDrawn) {
    ArmShape arm = Shape(300);
    arm.brightness = context.floor / 4 - 1;
    EXPECT_TRUE(Draw(arm));
    arm.brightness = 600000000u;
    arm.length = 0;
    EXPECT_TRUE(Draw(arm));
    arm.length = -5;
    EXPECT_TRUE(Draw(arm));
    EXPECT_EQ(stamp.count, 0);
    EXPECT_EQ(stamp.arms, nullptr);
    // At a high floor the arm fades out before the limit: its last row is nearly at the floor.
    gFloor = 40000000;
    UseContext(DefaultSettings());
    ASSERT_TRUE(Draw(Shape(1800)));
    const auto entries = Entries();
    const int32_t end = BoxOf(entries).bottom;
    uint32_t lastRow = 0;
    for (const StampEntry &entry : entries)
        if (entry.dy == end - 1)
            lastRow = std::max(lastRow, entry.value);
    EXPECT_LT(lastRow, context.floor / 4 * 3 / 2);
    EXPECT_LT(end, 100);
    EXPECT_EQ(stamp.arms[0].walked.to, end - 1);
}

// A render's own floor for a level trims the walk, but never a value that is as large.
TEST_F(ArmTest, WalkAboveALevelLosesNothing) {
    for (const int32_t angle : {1800, 450, 2200, -37}) {
        EmptyStamp(&stamp);
        ASSERT_TRUE(Draw(Shape(angle), 3, 1));
        const Arm whole = stamp.arms[0];
        const auto entries = Entries();
        for (uint32_t level = 1; level < 600000000u; level += level * 2 / 3 + 1) {
            stamp.arms[0].walked = WalkAbove(whole, level);
            auto trimmed = Entries(), expected = entries;
            const auto faint = [&](const StampEntry &e) { return e.value < level; };
            std::erase_if(trimmed, faint);
            std::erase_if(expected, faint);
            ASSERT_TRUE(Same(trimmed, expected)) << angle << " level " << level;
        }
        EXPECT_LT(stamp.arms[0].walked.to - stamp.arms[0].walked.from, 60);
    }
}

TEST_F(ArmTest, HalfZoomHalvesTheReach) {
    RenderSettings settings = DefaultSettings();
    gFloor = 400000;
    int32_t reach[2];
    for (int i = 0; i < 2; ++i) {
        settings.scale = i == 0 ? 100.0 : 50.0;
        UseContext(settings);
        ASSERT_TRUE(Draw({1800, StarSharpnessFactor(context), StarWidthFactor(context), 50, 50, 600000000u}));
        reach[i] = BoxOf(Entries()).bottom;
    }
    EXPECT_GT(reach[0], 40);
    EXPECT_LE(std::abs(reach[0] - 2 * reach[1]), reach[0] / 10); // the edges differ a little
}

// However high the zoom, no walk goes on far beyond the offsets that can be laid.
TEST_F(ArmTest, WalksEndWhereOffsetsDo) {
    RenderSettings settings = DefaultSettings();
    settings.scale = 100000.0;
    gFloor = 4;
    for (const int32_t angle : {900, 2700, 450}) {
        UseContext(settings);
        ASSERT_TRUE(Draw({angle, 0.5, 0.5, 100, 1, 0xFFFFFFFEu}));
        EXPECT_EQ(angle == 2700 ? -stamp.arms[0].walked.from : stamp.arms[0].walked.to, 32770);
    }
}

TEST_F(ArmTest, ArmsOfOneFallOffShareATable) {
    ASSERT_TRUE(Draw(Shape(1800)));
    ASSERT_TRUE(Draw(Shape(300), 2, 1));
    EXPECT_EQ(tables.count, 1);
    for (int32_t ArmShape::*field : {&ArmShape::length, &ArmShape::decay}) {
        ArmShape arm = Shape(1800);
        arm.*field = 60;
        ASSERT_TRUE(Draw(arm));
    }
    ArmShape brighter = Shape(1800);
    ++brighter.brightness;
    ASSERT_TRUE(Draw(brighter));
    EXPECT_EQ(tables.count, 4);
    for (int i = 0; i < 4; ++i)
        EXPECT_LE(tables.values[i].count, tables.stateCount);
}

// The star of the settings: its arms, then the burst; nothing without a length.
TEST_F(ArmTest, StarIsItsArmsThenTheBurst) {
    context.settings.secondaryIntensity = 0;
    context.settings.spikeSharpness = 0; // soft edges, so that the burst's softer ones show
    ASSERT_TRUE(DrawWholeStar());
    ASSERT_EQ(stamp.count, context.settings.numberOfPoints);
    const auto primary = Entries();
    context.settings.secondaryIntensity = 60;
    ASSERT_TRUE(DrawWholeStar());
    const int32_t points = context.settings.numberOfPoints;
    ASSERT_EQ(stamp.count, points + kBurstRays);
    EXPECT_TRUE(Same(EntriesOfArms(0, points), primary));
    const auto burst = EntriesOfArms(points, kBurstRays), firstRay = EntriesOfArms(points, 1);

    // The burst alone follows neither the effect type nor the number of points.
    context.settings.intensity = 0;
    context.settings.effectType = kVectorStar;
    context.settings.numberOfPoints = 9;
    ASSERT_TRUE(DrawWholeStar());
    EXPECT_EQ(stamp.count, kBurstRays);
    EXPECT_TRUE(Same(Entries(), burst));

    // Its first arm, from the table's first row: 4 degrees on from the star's angle, weight 32.
    EmptyStamp(&stamp);
    const uint32_t onePercent = SpikeBrightness(60) / 100;
    ASSERT_TRUE(Draw(
        {150 + 40, StarSharpnessFactor(context) * 0.5, StarWidthFactor(context), 45, 60, 32 * onePercent}, 1,
        3));
    EXPECT_TRUE(Same(Entries(), firstRay));

    context.settings.length = 0;
    ASSERT_TRUE(DrawWholeStar());
    EXPECT_EQ(stamp.count, 0);
    EXPECT_TRUE(IsEmptyRect(stamp.box));
}

// The stamp keeps what was drawn before memory ran out; one report, and no further arm.
TEST_F(ArmTest, ExhaustedMemoryIsReportedOnceAndEndsTheStar) {
    context.settings.effectType = kNorthStar; // arms of two lengths, two tables
    context.settings.secondaryIntensity = 100;
    for (int64_t n = 1; n <= 7; ++n) {
        UseContext(context.settings);
        FreeStamp(&stamp);
        FailAllocation(n, true);
        EXPECT_FALSE(DrawWholeStar());
        EXPECT_EQ(stamp.count, n < 5 ? 0 : n == 5 ? 1 : n == 6 ? 18 : 19) << n;
        FailAllocation(0, false);
        const auto reports = TakeReports();
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].record.line, 237u);
        EXPECT_EQ(reports[0].record.kind, kUserMessage);
        EXPECT_EQ(reports[0].messageBoxFlags, kWarningIcon);
        EXPECT_EQ(reports[0].title, "Warning");
        EXPECT_EQ(reports[0].message, "Low memory.  Check image - some effects may not be rendered.");
    }
}

TEST_F(ArmTest, AbortedStarIsEmptyAndBuiltAgain) {
    const std::atomic<uint8_t> raised{1};
    EXPECT_FALSE(DrawStar(context, raised, &tables, &stamp, 0, 0));
    EXPECT_EQ(stamp.count, 0);
    EXPECT_TRUE(TakeReports().empty());
}

} // namespace
