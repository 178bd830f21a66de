// Region objects against sets of pixels.
#include "diag/BufferUsage.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/SystemObjects.h"
#include "ui/pixels/PreviewGeometry.h"
#include "ui/preview/Regions.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace {

constexpr RegionStep kStep{1, "step"};
constexpr int32_t kSide = 48;

using Pixels = std::vector<bool>; // kSide × kSide

struct TestRegion {
    HRGN region = CreateRegion(kStep);
    ~TestRegion() { DeleteRegion(&region); }
    TestRegion() = default;
    TestRegion(const TestRegion &) = delete;
    TestRegion &operator=(const TestRegion &) = delete;
};

IntRect RandomRect(std::mt19937 *random) {
    const auto at = [&] { return static_cast<int32_t>((*random)() % (kSide - 8)); };
    const int32_t left = at(), top = at();
    return {left, top, left + 1 + static_cast<int32_t>((*random)() % 8),
            top + 1 + static_cast<int32_t>((*random)() % 8)};
}

void AddRandomRects(std::mt19937 *random, HRGN region, Pixels *pixels) {
    const TestRegion piece;
    for (int i = 0; i < 6; ++i) {
        const IntRect r = RandomRect(random);
        ASSERT_TRUE(SetRegionRect(piece.region, r, kStep));
        ASSERT_TRUE(CombineRegions(region, region, piece.region, RGN_OR, kStep));
        for (int32_t y = r.top; y < r.bottom; ++y)
            for (int32_t x = r.left; x < r.right; ++x)
                (*pixels)[static_cast<size_t>(y * kSide + x)] = true;
    }
}

// Whether the scaled and the document pixel have more than an edge in common, along one axis.
bool Touch(int32_t scaled, int32_t document, double zoom) {
    return std::min((document + 1) * zoom / 100.0, scaled + 1.0) -
               std::max(document * zoom / 100.0, double(scaled)) >
           1e-7;
}

bool TouchesAny(const Pixels &pixels, int32_t x, int32_t y, double zoom, bool toScaled) {
    for (int32_t dy = 0; dy < kSide; ++dy)
        for (int32_t dx = 0; dx < kSide; ++dx)
            if (pixels[static_cast<size_t>(dy * kSide + dx)] &&
                (toScaled ? Touch(x, dx, zoom) && Touch(y, dy, zoom)
                          : Touch(dx, x, zoom) && Touch(dy, y, zoom)))
                return true;
    return false;
}

} // namespace

TEST(Regions, ScaledAndUnscaledRegionsAreWhatTheirPixelsTouch) {
    std::mt19937 random(99);
    for (const double zoom : {16.67, 33.33, 50.0, 66.67, 100.0, 123.4, 250.0, 300.0})
        for (int round = 0; round < 3; ++round) {
            TestRegion region;
            Pixels pixels(kSide * kSide);
            AddRandomRects(&random, region.region, &pixels);
            for (const bool toScaled : {true, false}) {
                HRGN mapped =
                    toScaled ? ScaleRegion(region.region, zoom) : UnscaleRegion(region.region, zoom);
                ASSERT_NE(mapped, nullptr);
                const double factor = toScaled ? zoom / 100.0 : 100.0 / zoom;
                const auto end = static_cast<int32_t>(kSide * factor) + 2;
                const int32_t stride = std::max(end / 60, 1); // a sample of the pixels where they are many
                for (int32_t y = 0; y < end; y += stride)
                    for (int32_t x = 0; x < end; x += stride)
                        ASSERT_EQ(PtInRegion(mapped, x, y) != 0, TouchesAny(pixels, x, y, zoom, toScaled))
                            << zoom << (toScaled ? " scaled " : " unscaled ") << x << "," << y;
                DeleteRegion(&mapped);
            }
        }
    TestRegion empty, whole;
    ASSERT_TRUE(SetRegionRect(whole.region, {0, 0, 5, 5}, kStep));
    EXPECT_TRUE(RegionHolds(whole.region, empty.region) && !RegionHolds(empty.region, whole.region));
    HRGN mapped = ScaleRegion(empty.region, 250.0);
    EXPECT_NE(mapped, nullptr);
    EXPECT_FALSE(IsRegionFilled(mapped));
    DeleteRegion(&mapped);
}

TEST(Regions, FailuresAreReportedAndChangeNothing) {
    TakeReports();
    TestRegion region, other;
    ASSERT_TRUE(SetRegionRect(region.region, {1, 2, 30, 40}, kStep));
    FailSystemCall("SetRectRgn", 1, 8);
    EXPECT_FALSE(SetRegionRect(region.region, {0, 0, 1, 1}, {835, "Could not set."}));
    FailSystemCall("CombineRgn", 1, 0);
    EXPECT_FALSE(
        CombineRegions(region.region, region.region, other.region, RGN_AND, {838, "Could not combine."}));
    FailSystemCall("CreateRectRgn", 1, 14);
    EXPECT_EQ(CreateRegion({403, "Could not create."}), nullptr);
    FailAllocation(1, false);
    RegionRects rects{};
    EXPECT_FALSE(GetRegionRects(region.region, &rects));
    FailAllocation(0, false);
    EXPECT_FALSE(SetRegionRect(nullptr, {0, 0, 1, 1}, kStep));
    EXPECT_FALSE(IsRegionFilled(nullptr));
    const IntRect box = RegionBox(region.region);
    EXPECT_TRUE(box.left == 1 && box.top == 2 && box.right == 30 && box.bottom == 40);
    const std::vector<RecordedReport> reports = TakeReports();
    ASSERT_EQ(reports.size(), 4u);
    EXPECT_TRUE(reports[0].record.line == 835 && reports[0].record.kind == kSystemError &&
                reports[0].record.systemError == 8);
    EXPECT_TRUE(reports[1].record.line == 838 && reports[1].record.kind == kDebugMessage);
    EXPECT_TRUE(reports[2].record.line == 403 && reports[2].record.systemError == 14);
    EXPECT_EQ(reports[2].title, kTitleUnexpected);
}
