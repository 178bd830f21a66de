// One arm: its walk, its rows, what it leaves out, and what happens when memory runs out.
#include "render/SpikeRenderer.h"
#include "render/StarBuilder.h"
#include "tests/render/RenderFixture.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr uint64_t kSmallGrowth = 256 * 1024, kLargeGrowth = 5 * 1024 * 1024;

class ArmTest : public RenderTest {
protected:
    void SetUp() override {
        RenderTest::SetUp();
        context = MakeStampContext(DefaultSettings());
    }
    void TearDown() override {
        FreeStamp(&stamp);
        RenderTest::TearDown();
    }
    ArmShape Arm(int32_t angle) const { return {angle, 0.25, 0.5, 50, 50, 600000000u}; }
    bool Draw(const ArmShape &arm, int32_t px = 0, int32_t py = 0) {
        return DrawArm(context, &stamp, px, py, arm);
    }
    std::vector<StampEntry> Entries() const { return {stamp.entries, stamp.entries + stamp.count}; }
    // How many entries lie in the row or column of the centre.
    int64_t CentreRow(int16_t StampEntry::*axis) const {
        const auto entries = Entries();
        return std::count_if(entries.begin(), entries.end(),
                             [&](const StampEntry &e) { return e.*axis == 0; });
    }
    StampContext context;
    StarStamp stamp{};
};

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
        ASSERT_TRUE(Draw(Arm(c.angle)));
        ASSERT_GT(stamp.count, 20);
        EXPECT_EQ(CentreRow(c.axis) > 0, c.drawsCentre) << c.angle;
        for (const StampEntry &entry : Entries())
            EXPECT_TRUE(c.positive ? entry.*c.axis >= 0 : entry.*c.axis < 0) << c.angle;
    }
}

TEST_F(ArmTest, RowsAreScannedTowardSmallerPositionsFirst) {
    ArmShape arm = Arm(1800);
    arm.sharpnessFactor = 0.25; // edge slope a quarter: coverage ends 1 + 8 quarters from the centre line
    ASSERT_TRUE(Draw(arm));
    const int16_t expected[] = {0, -1, -2, 1, 2};
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(stamp.entries[i].dx, expected[i]) << i;
        EXPECT_EQ(stamp.entries[i].dy, 0) << i;
        EXPECT_EQ(stamp.entries[5 + i].dx, expected[i]) << i;
        EXPECT_EQ(stamp.entries[5 + i].dy, 1) << i;
    }
    // The flat part, at a coverage of 0.5625 to the power 1.6.
    EXPECT_EQ(stamp.entries[0].value, 238972151u);
}

// At exactly 45 degrees the components are equal or nearly so, and the x axis is the major one: columns, not
// rows.
TEST_F(ArmTest, DiagonalWalksAlongX) {
    ASSERT_TRUE(Draw(Arm(450)));
    EXPECT_EQ(stamp.entries[0].dx, 0);
    EXPECT_EQ(stamp.entries[1].dx, 0);
    EXPECT_EQ(stamp.entries[1].dy, stamp.entries[0].dy - 1);
}

TEST_F(ArmTest, WideArmsEndAtTheLimitsOnBothSides) {
    SetImageGeometry({0, 0, 12, 9});
    gFloor = 4;
    context = MakeStampContext(DefaultSettings());
    ArmShape arm = Arm(1800);
    arm.sharpnessFactor = 0.001;
    ASSERT_TRUE(Draw(arm));
    EXPECT_EQ(stamp.count, 25 * 10); // columns -12..12, rows 0..9
    EXPECT_EQ(stamp.minX, -12);
    EXPECT_EQ(stamp.maxX, 13);
    EXPECT_EQ(stamp.minY, 0);
    EXPECT_EQ(stamp.maxY, 10);
}

TEST_F(ArmTest, AnglesAreReducedAndPhasesShiftTheArm) {
    ASSERT_TRUE(Draw(Arm(-1), 1, 2));
    const auto reduced = Entries();
    EmptyStamp(&stamp);
    ASSERT_TRUE(Draw(Arm(3599 + 3 * 3600), 1, 2));
    ASSERT_EQ(Entries().size(), reduced.size());
    EXPECT_EQ(std::memcmp(stamp.entries, reduced.data(), reduced.size() * sizeof(StampEntry)), 0);
    // Down the pixel column with phase 2 of 4 the two neighbours to the right and left differ.
    EmptyStamp(&stamp);
    ASSERT_TRUE(Draw(Arm(1800), 2, 0));
    EXPECT_GT(stamp.entries[0].value, 0u);
    uint32_t left = 0, right = 0;
    for (const StampEntry &entry : Entries()) {
        if (entry.dy == 8 && entry.dx == -1)
            left = entry.value;
        if (entry.dy == 8 && entry.dx == 1)
            right = entry.value;
    }
    EXPECT_LT(left, right);
}

TEST_F(ArmTest, NothingBelowTheFloorIsStored) {
    ArmShape arm = Arm(300);
    arm.brightness = context.floor / 4 - 1;
    EXPECT_TRUE(Draw(arm));
    EXPECT_EQ(stamp.count, 0);
    arm.brightness = 600000000u;
    arm.length = 0;
    EXPECT_TRUE(Draw(arm));
    arm.length = -5;
    EXPECT_TRUE(Draw(arm));
    EXPECT_EQ(stamp.count, 0);
    EXPECT_EQ(stamp.entries, nullptr);
    // At a high floor the arm fades out before the limit: every entry is above, and the last row nearly at
    // it.
    context.floor = 40000000;
    ASSERT_TRUE(Draw(Arm(1800)));
    uint32_t least = 0xFFFFFFFF, lastRow = 0;
    for (const StampEntry &entry : Entries()) {
        least = std::min(least, entry.value);
        if (entry.dy == stamp.maxY - 1)
            lastRow = std::max(lastRow, entry.value);
    }
    EXPECT_GE(least, context.floor / 4);
    EXPECT_LT(lastRow, context.floor / 4 * 3 / 2);
    EXPECT_LT(stamp.maxY, 100);
}

TEST_F(ArmTest, HalfZoomHalvesTheReach) {
    RenderSettings settings = DefaultSettings();
    gFloor = 400000;
    int32_t reach[2];
    for (int i = 0; i < 2; ++i) {
        settings.scale = i == 0 ? 100.0 : 50.0;
        context = MakeStampContext(settings);
        EmptyStamp(&stamp);
        ASSERT_TRUE(Draw({1800, StarSharpnessFactor(context), StarWidthFactor(context), 50, 50, 600000000u}));
        reach[i] = stamp.maxY;
    }
    EXPECT_GT(reach[0], 40);
    EXPECT_LE(std::abs(reach[0] - 2 * reach[1]), reach[0] / 10); // the edges differ a little
}

TEST_F(ArmTest, OffsetsBeyondSixteenBitsAreLeftOut) {
    RenderSettings settings = DefaultSettings();
    settings.scale = 100000.0;
    gFloor = 4;
    for (const int32_t angle : {900, 2700, 450}) {
        context = MakeStampContext(settings);
        EmptyStamp(&stamp);
        ASSERT_TRUE(Draw({angle, 0.5, 0.5, 100, 1, 0xFFFFFFFEu}));
        EXPECT_GE(stamp.minX, -32768);
        EXPECT_LE(stamp.maxX, 32768);
        EXPECT_EQ(angle == 2700 ? stamp.minX : stamp.maxX, angle == 2700 ? -32768 : 32768);
        EXPECT_LT(stamp.count, 300000);
    }
}

TEST_F(ArmTest, TheTwoScansGrowTheArrayDifferently) {
    ASSERT_TRUE(Draw(Arm(1800)));
    EXPECT_EQ(stamp.capacityBytes,
              kSmallGrowth); // the first entry comes from the scan toward smaller positions
    const int32_t room = static_cast<int32_t>(kSmallGrowth / sizeof(StampEntry));
    stamp.count = room - 3; // a row is 3 entries toward smaller positions, then 2 toward larger ones
    ASSERT_TRUE(Draw(Arm(1800)));
    EXPECT_EQ(stamp.capacityBytes, kSmallGrowth + kLargeGrowth);
}

TEST_F(ArmTest, ReservingGrowsInProportionAndChecksItsLimits) {
    stamp.capacityBytes = 0;
    ASSERT_TRUE(ReserveStampEntry(&stamp, 100));
    EXPECT_EQ(stamp.capacityBytes, 100u);
    stamp.count = 5;
    FailAllocation(0, false);
    int64_t grown = 0;
    for (; stamp.count < 1000000; ++stamp.count)
        ASSERT_TRUE(ReserveStampEntry(&stamp, 100));
    grown = AllocationsMade();
    EXPECT_LT(grown, 40); // by the step alone it would be 200000
    EXPECT_GE(stamp.capacityBytes, 1000000u * 20u);
    const uint64_t before = stamp.capacityBytes;
    stamp.count = 0x7FFFFFFF;
    EXPECT_FALSE(ReserveStampEntry(&stamp, kLargeGrowth));
    EXPECT_EQ(stamp.capacityBytes, before);
    stamp.count = 0;
}

TEST_F(ArmTest, ExhaustedMemoryIsReportedOncePerArmAndKeepsTheStamp) {
    FailAllocation(1, false);
    EXPECT_FALSE(Draw(Arm(1800)));
    EXPECT_EQ(stamp.count, 0);
    ASSERT_TRUE(Draw(Arm(1800)));
    stamp.count = static_cast<int32_t>(kSmallGrowth / sizeof(StampEntry)) - 3;
    FailAllocation(1, true);
    EXPECT_FALSE(Draw(Arm(1800)));
    EXPECT_EQ(stamp.count, static_cast<int32_t>(kSmallGrowth / sizeof(StampEntry)));
    FailAllocation(0, false);
    const auto reports = TakeReports();
    ASSERT_EQ(reports.size(), 2u);
    for (const RecordedReport &report : reports) {
        EXPECT_EQ(report.record.line, 237u);
        EXPECT_EQ(report.record.kind, kUserMessage);
        EXPECT_EQ(report.messageBoxFlags, kWarningIcon);
        EXPECT_EQ(report.title, "Warning");
        EXPECT_EQ(report.message, "Low memory.  Check image - some effects may not be rendered.");
    }
}

// The star of the settings: its arms, then the burst; nothing without a length.
TEST_F(ArmTest, StarIsItsArmsThenTheBurst) {
    context.settings.secondaryIntensity = 0;
    context.settings.spikeSharpness = 0; // soft edges, so that the burst's softer ones show
    ASSERT_TRUE(DrawStar(context, &stamp, 1, 3));
    const auto primary = Entries();
    context.settings.secondaryIntensity = 60;
    ASSERT_TRUE(DrawStar(context, &stamp, 1, 3));
    ASSERT_GT(Entries().size(), primary.size());
    EXPECT_EQ(std::memcmp(stamp.entries, primary.data(), primary.size() * sizeof(StampEntry)), 0);
    const auto whole = Entries();

    // The burst alone follows neither the effect type nor the number of points.
    context.settings.intensity = 0;
    context.settings.effectType = kVectorStar;
    context.settings.numberOfPoints = 9;
    ASSERT_TRUE(DrawStar(context, &stamp, 1, 3));
    ASSERT_EQ(Entries().size(), whole.size() - primary.size());
    EXPECT_EQ(
        std::memcmp(stamp.entries, whole.data() + primary.size(), Entries().size() * sizeof(StampEntry)), 0);

    // Its first arm, from the table's first row: 4 degrees on from the star's angle, weight 32.
    const auto burst = Entries();
    EmptyStamp(&stamp);
    const uint32_t onePercent = SpikeBrightness(60) / 100;
    ASSERT_TRUE(Draw(
        {150 + 40, StarSharpnessFactor(context) * 0.5, StarWidthFactor(context), 45, 60, 32 * onePercent}, 1,
        3));
    ASSERT_LT(Entries().size(), burst.size());
    EXPECT_EQ(std::memcmp(stamp.entries, burst.data(), Entries().size() * sizeof(StampEntry)), 0);

    context.settings.length = 0;
    ASSERT_TRUE(DrawStar(context, &stamp, 1, 3));
    EXPECT_EQ(stamp.count, 0);
    EXPECT_EQ(stamp.maxX, 0);
}

TEST_F(ArmTest, StarStopsAtTheFirstFailingArm) {
    context.settings.secondaryIntensity = context.settings.length = 100;
    FailAllocation(2, true);
    EXPECT_FALSE(DrawStar(context, &stamp, 0, 0));
    EXPECT_EQ(stamp.count, static_cast<int32_t>(kSmallGrowth / sizeof(StampEntry)));
    EXPECT_EQ(TakeReports().size(), 1u);
}

} // namespace
