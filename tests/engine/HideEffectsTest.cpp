#include "engine/LightSourceTable.h"

#include "tests/engine/TestImages.h"

#include <cmath>

namespace {

struct HideEffectsTest : EngineTest {
    // Three sources in a row, 100 pixels apart.
    void SetUp() override {
        EngineTest::SetUp();
        for (const int32_t x : {100, 200, 300})
            AddLightSource(gLightSourceTable, LightSourcePosition{x, 2, 50, 1}, 4, 1, 1, 1, true);
    }
    LightSource &At(uint32_t i) { return GetLightSourceTable().records[i]; }
    void ExpectStates(uint32_t index, uint32_t state, uint32_t saved) {
        EXPECT_EQ(At(index).State, state);
        EXPECT_EQ(At(index).SavedState, saved);
    }
};

TEST_F(HideEffectsTest, HidingAndForcingKeepTheStateBeforeAndRestoreIt) {
    EXPECT_EQ(SetLightSourceStateAt(100, 50, 100, kHideEffect), 0);
    ExpectStates(0, 0, 1);
    EXPECT_EQ(SetLightSourceStateAt(100, 50, 100, kHideEffect), 0); // again: the kept state stays
    ExpectStates(0, 0, 1);
    EXPECT_EQ(SetLightSourceStateAt(100, 50, 100, kRestoreHidden), 0);
    ExpectStates(0, 1, 1);
    EXPECT_EQ(SetLightSourceStateAt(100, 50, 100, kForceEffect), 0);
    ExpectStates(0, 2, 1);
    EXPECT_EQ(SetLightSourceStateAt(100, 50, 100, kForceEffect), 0);
    ExpectStates(0, 2, 1);
    EXPECT_EQ(SetLightSourceStateAt(100, 50, 100, kHideEffect), 0);
    ExpectStates(0, 0, 2);
    EXPECT_EQ(SetLightSourceStateAt(100, 50, 100, kRestoreHidden), 0);
    ExpectStates(0, 2, 2);
    EXPECT_EQ(SetLightSourceStateAt(100, 50, 100, kRestoreForced), 0);
    ExpectStates(0, 2, 2); // what was kept is "forced": the source cannot go back further
}

TEST_F(HideEffectsTest, RestoringTakesOnlySourcesInTheStateItUndoes) {
    EXPECT_EQ(SetLightSourceStateAt(100, 50, 100, kRestoreHidden), -1);
    EXPECT_EQ(SetLightSourceStateAt(100, 50, 100, kRestoreForced), -1);
    for (const int32_t mode : {-1, 4, 99})
        EXPECT_EQ(SetLightSourceStateAt(100, 50, 100, mode), -1);
    SetLightSourceStateAt(200, 50, 100, kHideEffect);
    // Reaches past the nearer, visible source when the zoom lets it.
    EXPECT_EQ(SetLightSourceStateAt(101, 50, 10, kRestoreHidden), 1);
    ExpectStates(0, 1, 1);
    ExpectStates(1, 1, 1);
}

TEST_F(HideEffectsTest, ReachIsTwentyPixelsAtFullSizeAndGrowsAsTheZoomShrinks) {
    // Quarter pixels from (100.5, 50.25) along x: 4 × d − 2, with 1 across.
    EXPECT_EQ(SetLightSourceStateAt(120, 50, 100, kHideEffect), 0); // 78² + 1² < 80²
    EXPECT_EQ(SetLightSourceStateAt(121, 50, 100, kHideEffect), -1);
    EXPECT_EQ(SetLightSourceStateAt(121, 50, 400, kHideEffect), -1); // never less than 80
    EXPECT_EQ(SetLightSourceStateAt(140, 50, 50, kHideEffect), 0);   // 160 at 50 %
    EXPECT_EQ(SetLightSourceStateAt(141, 50, 50, kHideEffect), -1);
    EXPECT_EQ(SetLightSourceStateAt(100, 70, 100, kHideEffect), 0); // 2² + 79² < 80²
    EXPECT_EQ(SetLightSourceStateAt(100, 71, 100, kHideEffect), -1);
}

TEST_F(HideEffectsTest, TheNearestWinsAndTiesKeepTheFirst) {
    EXPECT_EQ(SetLightSourceStateAt(151, 50, 10, kHideEffect), 1); // 199.5 pixels to go, 49.5 to the other
    At(1).XQuarter = At(0).XQuarter = 0;
    EXPECT_EQ(SetLightSourceStateAt(150, 50, 10, kHideEffect), 0);
}

TEST_F(HideEffectsTest, WildPointsAndZoomsAreHarmless) {
    for (const double zoom : {0.0, -5.0, std::nan(""), 1e-300, 1e300, HUGE_VAL})
        for (const int32_t v : {INT32_MIN, INT32_MAX}) {
            EXPECT_EQ(SetLightSourceStateAt(v, v, zoom, kHideEffect), -1);
            EXPECT_LE(SetLightSourceStateAt(0, 0, zoom, kRestoreForced), -1);
        }
    FreeTableRecords(gLightSourceTable);
    EXPECT_EQ(SetLightSourceStateAt(0, 0, 100, kHideEffect), -1);
    EXPECT_EQ(SetLightSourceStatesInRect(IntRect{0, 0, 9, 9}, kHideEffect), 0);
}

TEST_F(HideEffectsTest, ARectangleChangesEveryEligibleSourceInside) {
    EXPECT_EQ(SetLightSourceStatesInRect(IntRect{100, 50, 200, 51}, kForceEffect),
              1); // right edge is outside
    EXPECT_EQ(SetLightSourceStatesInRect(IntRect{0, 0, 400, 100}, kHideEffect), 3);
    ExpectStates(0, 0, 2);
    ExpectStates(2, 0, 1);
    EXPECT_EQ(SetLightSourceStatesInRect(IntRect{100, 50, 201, 51}, kRestoreHidden), 2);
    ExpectStates(0, 2, 2);
    ExpectStates(1, 1, 1);
    ExpectStates(2, 0, 1);
    EXPECT_EQ(SetLightSourceStatesInRect(IntRect{400, 0, 0, 100}, kHideEffect), 0); // upside down
}

using LightSourceTextTest = HideEffectsTest;

TEST_F(LightSourceTextTest, ListsTheCountAndThenEverySource) {
    At(0).Brightness = 0xABCDEF01;
    At(1).State = 0;
    At(2).RadiusSquared = 7;
    EXPECT_STREQ(FormatLightSourceTableLine(true), "NumberOfLightSources = 3\n\n");
    EXPECT_STREQ(FormatLightSourceTableLine(false),
                 "LightSourceTable[0000] x = 100.50, y = 50.25, Diam = 4.00, Bright = ABCDEF01");
    EXPECT_STREQ(FormatLightSourceTableLine(false),
                 "LightSourceTable[0001] x = 200.50, y = 50.25, Diam = 4.00, Bright = 0 (D)");
    EXPECT_STREQ(FormatLightSourceTableLine(false),
                 "LightSourceTable[0002] x = 300.50, y = 50.25, Diam = 5.29, Bright = 0");
    EXPECT_EQ(FormatLightSourceTableLine(false), nullptr);
    EXPECT_EQ(FormatLightSourceTableLine(false), nullptr);
    EXPECT_STREQ(FormatLightSourceTableLine(true), "NumberOfLightSources = 3\n\n");
    EXPECT_STREQ(FormatLightSourceTableLine(false),
                 "LightSourceTable[0000] x = 100.50, y = 50.25, Diam = 4.00, Bright = ABCDEF01");
}

TEST_F(LightSourceTextTest, AnEmptyTableHasOnlyTheCount) {
    FreeTableRecords(gLightSourceTable);
    EXPECT_STREQ(FormatLightSourceTableLine(true), "NumberOfLightSources = 0\n\n");
    EXPECT_EQ(FormatLightSourceTableLine(false), nullptr);
}

} // namespace
