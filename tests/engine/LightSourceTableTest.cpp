#include "engine/LightSourceTable.h"

#include "diag/BufferUsage.h"
#include "engine/LightSourceGrid.h"
#include "tests/engine/TestImages.h"

#include <cstring>
#include <limits>
#include <random>

namespace {

// A table that frees itself.
struct TestTable {
    LightSourceTable table{};
    ~TestTable() { FreeTableRecords(&table); }
    TestTable() = default;
    TestTable(const TestTable &) = delete;
    TestTable &operator=(const TestTable &) = delete;
};

HostResult Add(LightSourceTable *table, int32_t x, int32_t y, float radiusSquared, bool enabled = true,
               uint32_t level = 100) {
    return AddLightSource(table, LightSourcePosition{x, 0, y, 0}, radiusSquared, level, level, level,
                          enabled);
}

using LightSourceTableTest = EngineTest;

TEST_F(LightSourceTableTest, ANewRecordHoldsWhatItWasGiven) {
    TestTable t;
    ASSERT_EQ(AddLightSource(&t.table, LightSourcePosition{-5, 3, 7, 1}, 6.5f, 11, 22, 33, true), kNoError);
    ASSERT_EQ(AddLightSource(&t.table, LightSourcePosition{50, 0, 50, 0}, 6.49f, 1, 2, 3, false), kNoError);
    ASSERT_EQ(t.table.Count, 2u);
    const LightSource &s = t.table.records[0];
    EXPECT_EQ(s.X, -5);
    EXPECT_EQ(s.XQuarter, 3);
    EXPECT_EQ(s.Y, 7);
    EXPECT_EQ(s.YQuarter, 1);
    EXPECT_EQ(s.RadiusSquared, 7);
    EXPECT_EQ(s.Red, 11u);
    EXPECT_EQ(s.Green, 22u);
    EXPECT_EQ(s.Blue, 33u);
    EXPECT_EQ(s.Intensity, 0xFFFFFFFEu);
    EXPECT_EQ(s.Aux, -1);
    EXPECT_EQ(s.State, 1u);
    EXPECT_EQ(s.SavedState, 1u);
    EXPECT_EQ(t.table.records[1].RadiusSquared, 6);
    EXPECT_EQ(t.table.records[1].State, 0u);
    EXPECT_EQ(t.table.records[1].SavedState, 1u);
}

TEST_F(LightSourceTableTest, AnExactDuplicateDoesNothingWhateverItsRadius) {
    TestTable t;
    Add(&t.table, 0, 0, 4);
    Add(&t.table, 20, 0, 9);
    Add(&t.table, 20, 0, 1e6f); // would cover both
    ASSERT_EQ(t.table.Count, 2u);
    EXPECT_EQ(t.table.records[0].State, 1u);
    EXPECT_EQ(t.table.records[1].State, 1u);
    // Another quarter is another position: then the radius decides.
    AddLightSource(&t.table, LightSourcePosition{20, 1, 0, 0}, 10, 1, 1, 1, true);
    ASSERT_EQ(t.table.Count, 3u);
    EXPECT_EQ(t.table.records[1].State, 0u);
}

TEST_F(LightSourceTableTest, OverlapIsDecidedByTheLargerRadiusStrictly) {
    TestTable t;
    Add(&t.table, 0, 0, 25);
    Add(&t.table, 5, 0, 4); // distance² 25 is not below 25
    EXPECT_EQ(t.table.Count, 2u);
    Add(&t.table, 0, 4, 4); // inside the first
    EXPECT_EQ(t.table.Count, 2u);
    Add(&t.table, -4, 0, 25); // no larger than the first: blocked, and the first stays
    EXPECT_EQ(t.table.Count, 2u);
    EXPECT_EQ(t.table.records[0].State, 1u);
}

TEST_F(LightSourceTableTest, ALargerEnabledSourceHidesEverySmallerOneItCovers) {
    TestTable t;
    Add(&t.table, 0, 0, 4);
    Add(&t.table, 6, 0, 4);
    Add(&t.table, 3, 3, 100, false); // disabled: blocked, hides nothing
    EXPECT_EQ(t.table.Count, 2u);
    EXPECT_EQ(t.table.records[0].State, 1u);
    Add(&t.table, 3, 3, 100);
    ASSERT_EQ(t.table.Count, 3u);
    EXPECT_EQ(t.table.records[0].State, 0u);
    EXPECT_EQ(t.table.records[1].State, 0u);
    EXPECT_EQ(t.table.records[0].SavedState, 1u);
}

TEST_F(LightSourceTableTest, ABlockedSourceStillHidesTheSmallerOnesItCovers) {
    TestTable t;
    Add(&t.table, 0, 0, 4);
    Add(&t.table, 15, 0, 400); // larger than what comes
    Add(&t.table, 0, 3, 100);
    EXPECT_EQ(t.table.Count, 2u);
    EXPECT_EQ(t.table.records[0].State, 0u);
    EXPECT_EQ(t.table.records[1].State, 1u);
}

TEST_F(LightSourceTableTest, WildRadiiAndPositionsAreHarmless) {
    TestTable t;
    constexpr int32_t kLow = INT32_MIN, kHigh = INT32_MAX;
    for (const float radius : {-1.0f, std::numeric_limits<float>::quiet_NaN(), 1e30f, 0.0f})
        for (const int32_t x : {kLow, 0, kHigh})
            for (const int32_t y : {kLow, 0, kHigh})
                EXPECT_EQ(Add(&t.table, x, y, radius), kNoError);
    for (uint32_t i = 0; i < t.table.Count; ++i)
        EXPECT_GE(t.table.records[i].RadiusSquared, 0);
}

TEST_F(LightSourceTableTest, GrowsByTwoThousandFortyEightRecordsAndSurvivesAFailure) {
    TestTable t;
    for (int32_t i = 0; i < 2048; ++i)
        ASSERT_EQ(Add(&t.table, i * 10, 0, 1), kNoError);
    EXPECT_EQ(t.table.allocatedBytes, 2048 * sizeof(LightSource));
    FailAllocation(1, true);
    EXPECT_EQ(Add(&t.table, -10, 0, 1), kMemFullErr);
    EXPECT_EQ(Add(&t.table, 0, 0, 1), kMemFullErr); // room is made before the duplicate is seen
    FailAllocation(0, false);
    EXPECT_EQ(t.table.Count, 2048u);
    EXPECT_EQ(Add(&t.table, -10, 0, 1), kNoError);
    EXPECT_EQ(t.table.Count, 2049u);
    EXPECT_EQ(t.table.allocatedBytes, 4096 * sizeof(LightSource));
    EXPECT_EQ(BufferBytesInUse(), static_cast<int64_t>(t.table.allocatedBytes));
}

struct RandomSource {
    LightSourcePosition position;
    float radiusSquared;
    bool enabled;
};

// Clustered, so that sources overlap, repeat positions and leave the grid's bounds.
std::vector<RandomSource> RandomSources(uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<RandomSource> sources;
    for (int i = 0; i < 1500; ++i) {
        const auto coordinate = [&random] { return static_cast<int32_t>(random() % 260) - 30; };
        const auto quarter = [&random] { return static_cast<int32_t>(random() % 8 == 0); };
        const float radius = static_cast<float>(random() % 1000) / (random() % 4 == 0 ? 20.0f : 300.0f);
        sources.push_back({LightSourcePosition{coordinate(), quarter(), coordinate(), quarter()},
                           radius * radius, random() % 5 != 0});
    }
    return sources;
}

TEST_F(LightSourceTableTest, WithAndWithoutAGridTheTableIsTheSame) {
    for (uint32_t seed = 1; seed <= 4; ++seed)
        for (const int32_t cellSize : {1, 8, 50}) {
            TestTable plain, grid, late;
            AttachLightSourceGrid(IntRect{0, 0, 200, 190}, cellSize, &grid.table);
            ASSERT_NE(grid.table.grid, nullptr);
            int inserted = 0;
            for (const RandomSource &s : RandomSources(seed)) {
                for (LightSourceTable *t : {&plain.table, &grid.table, &late.table})
                    ASSERT_EQ(AddLightSource(t, s.position, s.radiusSquared, 1, 2, 3, s.enabled), kNoError);
                ASSERT_EQ(IsInsideLightSource(plain.table, s.position.Y, s.position.X),
                          IsInsideLightSource(grid.table, s.position.Y, s.position.X));
                if (++inserted == 300)
                    AttachLightSourceGrid(IntRect{0, 0, 200, 190}, cellSize, &late.table);
            }
            for (const LightSourceTable *t : {&grid.table, &late.table}) {
                ASSERT_EQ(t->Count, plain.table.Count);
                ASSERT_EQ(memcmp(t->records, plain.table.records, t->Count * sizeof(LightSource)), 0) << seed;
            }
        }
}

TEST_F(LightSourceTableTest, WithoutMemoryForTheGridTheTableIsStillTheSame) {
    TestTable plain;
    const std::vector<RandomSource> sources = RandomSources(9);
    for (const RandomSource &s : sources)
        AddLightSource(&plain.table, s.position, s.radiusSquared, 1, 2, 3, s.enabled);
    for (const int64_t failing : {1, 2, 4, 5}) {
        TestTable t;
        FailAllocation(failing, false);
        AttachLightSourceGrid(IntRect{0, 0, 200, 190}, 1, &t.table);
        EXPECT_EQ(t.table.grid == nullptr, failing <= 2);
        for (const RandomSource &s : sources)
            ASSERT_EQ(AddLightSource(&t.table, s.position, s.radiusSquared, 1, 2, 3, s.enabled), kNoError);
        EXPECT_EQ(t.table.grid, nullptr) << "the failure never came";
        FailAllocation(0, false);
        ASSERT_EQ(t.table.Count, plain.table.Count);
        EXPECT_EQ(memcmp(t.table.records, plain.table.records, t.table.Count * sizeof(LightSource)), 0);
    }
}

// An analysis image of 40 × 40 selected pixels whose mask and coverage the test may change.
struct MergeTest : EngineTest {
    void SetUp() override {
        EngineTest::SetUp();
        samples.assign(1600, PixelSample{1, 1, 1, 0xFFFFFFFF, 0xFFFFFFFF});
        image = AnalysisImage{IntRect{0, 0, 40, 40}, 1.0, 0, samples.data(), 0};
    }
    void TearDown() override {
        FreeTableRecords(&worker.table);
        EngineTest::TearDown();
    }
    std::vector<PixelSample> samples;
    AnalysisImage image{};
    TestTable worker;
};

TEST_F(MergeTest, WithoutAScaleQuartersAreKept) {
    AddLightSource(&worker.table, LightSourcePosition{5, 3, 6, 2}, 4, 7, 8, 9, true);
    ASSERT_EQ(MergeWorkerTable(worker.table, image, cancel), kNoError);
    const std::vector<LightSource> merged = GlobalSources();
    ASSERT_EQ(merged.size(), 1u);
    EXPECT_EQ(merged[0].XQuarter, 3);
    EXPECT_EQ(merged[0].YQuarter, 2);
    EXPECT_EQ(merged[0].RadiusSquared, 4);
    EXPECT_EQ(merged[0].Blue, 9u);
}

TEST_F(MergeTest, WithAScaleQuartersAreDroppedAndPixelsRounded) {
    image.scale = 2.5;
    AddLightSource(&worker.table, LightSourcePosition{5, 3, 6, 2}, 4, 7, 8, 9, true);
    AddLightSource(&worker.table, LightSourcePosition{0, 0, 39, 0}, 0, 7, 8, 9, true);
    ASSERT_EQ(MergeWorkerTable(worker.table, image, cancel), kNoError);
    const std::vector<LightSource> merged = GlobalSources();
    ASSERT_EQ(merged.size(), 2u);
    EXPECT_EQ(merged[0].X, 13); // 12.5 rounds up
    EXPECT_EQ(merged[0].XQuarter, 0);
    EXPECT_EQ(merged[0].Y, 15);
    EXPECT_EQ(merged[0].YQuarter, 0);
    EXPECT_EQ(merged[0].RadiusSquared, 25);
    EXPECT_EQ(merged[1].Y, 98);
    EXPECT_EQ(merged[1].RadiusSquared, 0);
}

TEST_F(MergeTest, OnlyNormalSourcesOnSelectedPixelsCome) {
    Add(&worker.table, 1, 1, 1);
    Add(&worker.table, 10, 1, 1, false); // not selected when it was found
    Add(&worker.table, 20, 1, 1);
    Add(&worker.table, 30, 1, 1);
    Add(&worker.table, 1, 20, 1);
    worker.table.records[2].State = 2;
    samples[1 * 40 + 30].coverage = 0;
    samples[20 * 40 + 1].selectionLevel = 0x7FFFFFFE;
    ASSERT_EQ(MergeWorkerTable(worker.table, image, cancel), kNoError);
    const std::vector<LightSource> merged = GlobalSources();
    ASSERT_EQ(merged.size(), 1u);
    EXPECT_EQ(merged[0].X, 1);
}

TEST_F(MergeTest, StopsWhenCancelledAndPassesOnAMemoryFailure) {
    Add(&worker.table, 1, 1, 1);
    FailAllocation(1, false);
    EXPECT_EQ(MergeWorkerTable(worker.table, image, cancel), kMemFullErr);
    FailAllocation(0, false);
    cancel = 1;
    EXPECT_EQ(MergeWorkerTable(worker.table, image, cancel), kNoError);
    EXPECT_TRUE(GlobalSources().empty());
}

struct RankTest : EngineTest {
    // Sources too far apart to meet, each with its three levels.
    void AddLevels(uint32_t red, uint32_t green, uint32_t blue, bool enabled = true) {
        ASSERT_EQ(AddLightSource(gLightSourceTable, LightSourcePosition{next++ * 100, 0, 0, 0}, 1, red, green,
                                 blue, enabled),
                  kNoError);
    }
    int32_t next = 0;
};

TEST_F(RankTest, TheBrightestChannelOfTheVisibleSourcesBecomesOne) {
    AddLevels(100, 50, 25);
    AddLevels(400, 0, 0, false); // hidden: does not set the scale, and saturates
    AddLevels(0, 0, 200);
    RankLightSources(cancel);
    const std::vector<LightSource> s = GlobalSources();
    EXPECT_EQ(s[0].State, 0u);
    EXPECT_EQ(s[0].Red, 0xFFFFFFFEu);
    EXPECT_EQ(s[0].Brightness, 0xFFFFFFFEu / 3);
    EXPECT_EQ(s[1].Blue, 0xFFFFFFFEu);
    EXPECT_EQ(s[2].Red, 0x80000000u);
    EXPECT_EQ(s[2].Green, 0x40000000u);
    EXPECT_EQ(s[2].Blue, 0x20000000u);
    EXPECT_EQ(s[2].Brightness, (0x80000000u + 0x40000000u + 0x20000000u) / 3);
}

TEST_F(RankTest, SortsBrightestFirstAndKeepsTheOrderOfEquals) {
    for (const uint32_t level : {10, 30, 20, 30, 10, 20})
        AddLevels(level, level, level);
    RankLightSources(cancel);
    const int32_t order[] = {1, 3, 2, 5, 0, 4};
    const std::vector<LightSource> s = GlobalSources();
    for (size_t i = 0; i < s.size(); ++i)
        EXPECT_EQ(s[i].X, order[i] * 100);
}

TEST_F(RankTest, NothingVisibleOrNothingBrightIsFullBrightness) {
    RankLightSources(cancel); // empty
    AddLevels(0, 0, 0);
    AddLevels(500, 0, 0, false);
    RankLightSources(cancel);
    for (const LightSource &s : GlobalSources()) {
        EXPECT_EQ(s.Red, 0xFFFFFFFEu);
        EXPECT_EQ(s.Brightness, 0xFFFFFFFEu);
    }
}

TEST_F(RankTest, ACancelledRankingChangesNothing) {
    AddLevels(1, 1, 1);
    AddLevels(2, 2, 2);
    const std::vector<LightSource> before = GlobalSources();
    cancel = 1;
    RankLightSources(cancel);
    EXPECT_TRUE(SameSources(before, GlobalSources()));
}

TEST(CutLevel, FollowsTheSquareOfTheRest) {
    EXPECT_EQ(ThresholdCutLevel(0), 4294967294u);
    EXPECT_EQ(ThresholdCutLevel(50), 1073741823u);
    EXPECT_EQ(ThresholdCutLevel(90), 42949672u);
    EXPECT_EQ(ThresholdCutLevel(99), 429496u);
    for (const int32_t threshold : {100, 101, INT32_MAX})
        EXPECT_EQ(ThresholdCutLevel(threshold), 0u);
    EXPECT_EQ(ThresholdCutLevel(INT32_MIN), 4294967294u);
    for (int32_t p = 1; p <= 100; ++p)
        EXPECT_LT(ThresholdCutLevel(p), ThresholdCutLevel(p - 1));
}

TEST(CutLevel, SelectsForcedAndStrictlyBrighterNormalSources) {
    LightSource s{};
    s.Brightness = 100;
    const bool expected[3][2] = {{false, false}, {true, false}, {true, true}}; // by state, at cut 99 and 100
    for (uint32_t state = 0; state < 3; ++state) {
        s.State = state;
        EXPECT_EQ(IsLightSourceSelected(s, 99), expected[state][0]);
        EXPECT_EQ(IsLightSourceSelected(s, 100), expected[state][1]);
    }
}

} // namespace
