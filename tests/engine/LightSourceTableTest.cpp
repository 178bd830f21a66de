// The table where no comparison with the yardstick goes: growth, failures and wild inputs.
#include "engine/table/LightSourceTable.h"

#include "diag/BufferUsage.h"
#include "engine/table/HideEffects.h"
#include "engine/table/LightSourceGrid.h"
#include "engine/table/LightSourceText.h"
#include "tests/engine/TestImages.h"

#include <cmath>
#include <limits>

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
    AttachLightSourceGrid({0, 0, 20480, 8}, 1, &t.table);
    EXPECT_GE(t.table.grid->nodeBytes, t.table.grid->nodeCount * sizeof(LightSourceGridNode));
    FailAllocation(3, false); // the grid's nodes
    AttachLightSourceGrid({0, 0, 20480, 8}, 64, &t.table);
    EXPECT_EQ(t.table.grid, nullptr) << "half a grid hides lights";
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

TEST_F(LightSourceTableTest, AMergeStopsWhenCancelledAndPassesOnAMemoryFailure) {
    std::vector<PixelSample> samples(16, PixelSample{1, 1, 1, 0xFFFFFFFF, 0xFFFFFFFF});
    const AnalysisImage image{IntRect{0, 0, 4, 4}, 1.0, 0, samples.data(), 0};
    TestTable worker;
    Add(&worker.table, 1, 1, 1);
    worker.table.records[0].State = 2; // never so in a worker's table: not taken
    EXPECT_EQ(MergeWorkerTable(worker.table, image, cancel), kNoError);
    EXPECT_TRUE(GlobalSources().empty());
    worker.table.records[0].State = 1;
    FailAllocation(1, false);
    EXPECT_EQ(MergeWorkerTable(worker.table, image, cancel), kMemFullErr);
    FailAllocation(0, false);
    cancel = 1;
    EXPECT_EQ(MergeWorkerTable(worker.table, image, cancel), kNoError);
    EXPECT_TRUE(GlobalSources().empty());
}

TEST_F(LightSourceTableTest, RankingWhereNothingIsBrightOrCancelled) {
    const std::atomic<uint8_t> go{0};
    RankLightSources(go); // empty
    EXPECT_STREQ(FormatLightSourceTableLine(true), "NumberOfLightSources = 0\n\n");
    EXPECT_EQ(FormatLightSourceTableLine(false), nullptr);
    Add(gLightSourceTable, 0, 0, 1, true, 0);
    Add(gLightSourceTable, 100, 0, 1, false, 500);
    const std::vector<LightSource> before = GlobalSources();
    cancel = 1;
    RankLightSources(cancel);
    EXPECT_TRUE(SameSources(before, GlobalSources()));
    RankLightSources(go);
    for (const LightSource &s : GlobalSources()) {
        EXPECT_EQ(s.Red, 0xFFFFFFFEu);
        EXPECT_EQ(s.Brightness, 0xFFFFFFFEu);
    }
}

TEST_F(LightSourceTableTest, HidingAtWildPointsAndZoomsIsHarmless) {
    for (const int32_t x : {100, 200, 300})
        Add(gLightSourceTable, x, 50, 4);
    for (const double zoom : {0.0, -5.0, std::nan(""), 1e-300, 1e300, HUGE_VAL})
        for (const int32_t v : {INT32_MIN, INT32_MAX}) {
            EXPECT_EQ(SetLightSourceStateAt(v, v, zoom, kHideEffect), -1);
            EXPECT_LE(SetLightSourceStateAt(0, 0, zoom, kRestoreForced), -1);
        }
    EXPECT_EQ(SetLightSourceStatesInRect(IntRect{400, 0, 0, 100}, kHideEffect), 0) << "upside down";
    FreeTableRecords(gLightSourceTable);
    EXPECT_EQ(SetLightSourceStateAt(0, 0, 100, kHideEffect), -1);
    EXPECT_EQ(SetLightSourceStatesInRect(IntRect{0, 0, 9, 9}, kHideEffect), 0);
}

} // namespace
