// Region objects: scaling, holding, and what fails.
#include "diag/BufferUsage.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/SystemObjects.h"
#include "ui/pixels/PreviewGeometry.h"
#include "ui/preview/Regions.h"

#include <gtest/gtest.h>

#include <random>
#include <utility>
#include <vector>

namespace {

constexpr RegionStep kStep{1, "step"};

struct TestRegion {
    HRGN region = CreateRegion(kStep);
    ~TestRegion() { DeleteRegion(&region); }
    TestRegion() = default;
    TestRegion(const TestRegion &) = delete;
    TestRegion &operator=(const TestRegion &) = delete;
};

void AddRect(HRGN region, const IntRect &rect) {
    const TestRegion piece;
    ASSERT_TRUE(SetRegionRect(piece.region, rect, kStep));
    ASSERT_TRUE(CombineRegions(region, region, piece.region, RGN_OR, kStep));
}

} // namespace

// A rectangle's own scaling is proved with the geometry; a region is all of its rectangles, however they
// overlap.
TEST(Regions, ScaledAndUnscaledRegionsAreAllThatTheirRectanglesBecome) {
    std::mt19937 random(99);
    for (const double zoom : {16.67, 33.33, 50.0, 66.67, 100.0, 123.4, 250.0, 300.0})
        for (const auto &[mapRegion, mapRect] :
             {std::pair{&ScaleRegion, &ScaleRect}, std::pair{&UnscaleRegion, &UnscaleRect}})
            for (int round = 0; round < 20; ++round) {
                TestRegion region, expected;
                for (int i = 0; i < 6; ++i) {
                    const auto at = [&] { return static_cast<int32_t>(random() % 40); };
                    const int32_t left = at(), top = at();
                    const IntRect rect = {left, top, left + 1 + at() / 5, top + 1 + at() / 5};
                    AddRect(region.region, rect);
                    AddRect(expected.region, mapRect(rect, zoom));
                }
                HRGN mapped = mapRegion(region.region, zoom);
                EXPECT_TRUE(mapped && EqualRgn(mapped, expected.region)) << zoom << " round " << round;
                DeleteRegion(&mapped);
            }
    TestRegion empty, whole;
    ASSERT_TRUE(SetRegionRect(whole.region, {0, 0, 5, 5}, kStep));
    EXPECT_TRUE(RegionHolds(whole.region, empty.region) && !RegionHolds(empty.region, whole.region));
    HRGN mapped = ScaleRegion(empty.region, 250.0);
    EXPECT_NE(mapped, nullptr);
    EXPECT_FALSE(IsRegionFilled(mapped));
    DeleteRegion(&mapped);
}
