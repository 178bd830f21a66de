// The soft flare's values and rings.
#include "render/SoftFlare.h"
#include "render/SpikeProfile.h"
#include "tests/render/RenderFixture.h"

#include <map>

namespace {

class FlareTest : public RenderTest {
protected:
    void SetUp() override {
        RenderTest::SetUp();
        context = MakeStampContext(DefaultSettings());
    }
    void TearDown() override {
        FreeStamp(&stamp);
        RenderTest::TearDown();
    }
    // Every entry by its offset; fails on a pixel that comes twice.
    std::map<std::pair<int, int>, uint32_t> Pixels() const {
        std::map<std::pair<int, int>, uint32_t> pixels;
        for (int32_t i = 0; i < stamp.count; ++i) {
            const StampEntry &entry = stamp.entries[i];
            const bool first = pixels.emplace(std::pair(entry.dx, entry.dy), entry.value).second;
            EXPECT_TRUE(first) << entry.dx << " " << entry.dy;
            for (const uint32_t factor : entry.factor)
                EXPECT_EQ(factor, kFractionOne);
        }
        return pixels;
    }
    StampContext context;
    StarStamp stamp{};
};

TEST_F(FlareTest, ValuesToTheInteger) {
    context.diagonal = 1000;
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(FlareValueAt(context, 0), 67108604u);
        EXPECT_EQ(FlareValueAt(context, 1), 66857448u);
        EXPECT_EQ(FlareValueAt(context, 1000), 2360927u);
        EXPECT_EQ(FlareValueAt(context, 39999), 0u);
        EXPECT_EQ(FlareValueAt(context, 60000), 0u);
    }
}

TEST_F(FlareTest, MemoFollowsLengthScaleAndDiagonal) {
    context.diagonal = 1000;
    StampContext others[] = {context, context, context};
    others[0].settings.length = 51;
    others[1].settings.scale = 101.0;
    others[2].diagonal = 1001;
    for (const StampContext &other : others) {
        EXPECT_EQ(FlareValueAt(context, 1000), 2360927u);
        EXPECT_GT(FlareValueAt(other, 1000), 2360927u);
        EXPECT_EQ(FlareValueAt(context, 1000), 2360927u);
    }
}

// Each pixel once, none missing inside the reach, each with its own distance from the phase point.
TEST_F(FlareTest, RingsHoldEveryBrightPixelOnce) {
    for (const auto &[px, py] : {std::pair(0, 0), std::pair(3, 0), std::pair(1, 2)}) {
        ASSERT_TRUE(DrawFlare(context, &stamp, px, py));
        const auto pixels = Pixels();
        ASSERT_GT(pixels.size(), 300u);
        int32_t furthest = 0;
        for (const auto &[offset, value] : pixels) {
            const auto [x, y] = offset;
            EXPECT_EQ(value, FlareValueAt(context, MeasureDistance(4 * x - px, 4 * y - py)));
            EXPECT_TRUE(value >= context.floor || (x == 0 && y == 0));
            EXPECT_TRUE(x >= stamp.minX && x < stamp.maxX && y >= stamp.minY && y < stamp.maxY);
            furthest = std::max({furthest, std::abs(x), std::abs(y)});
        }
        for (int32_t y = -furthest; y <= furthest; ++y)
            for (int32_t x = -furthest; x <= furthest; ++x) {
                const uint32_t value = FlareValueAt(context, MeasureDistance(4 * x - px, 4 * y - py));
                EXPECT_TRUE(value < context.floor || pixels.contains({x, y})) << x << " " << y;
            }
        EXPECT_EQ(stamp.minX, -stamp.maxX);
        EXPECT_EQ(stamp.minY, -stamp.maxY);
    }
}

TEST_F(FlareTest, RingsEndAtTheImageWidthAndTheCentreIsAlwaysDrawn) {
    context.imageWidth = 3;
    ASSERT_TRUE(DrawFlare(context, &stamp, 0, 0));
    EXPECT_EQ(stamp.count, 49);
    EXPECT_EQ(stamp.maxX, 4);
    context.floor = 0xFFFFFFFF;
    ASSERT_TRUE(DrawFlare(context, &stamp, 0, 0));
    ASSERT_EQ(stamp.count, 1);
    EXPECT_EQ(stamp.entries[0].value, 67108604u);
}

TEST_F(FlareTest, ExhaustedMemoryEndsTheFlareSilently) {
    FailAllocation(1, false);
    EXPECT_FALSE(DrawFlare(context, &stamp, 0, 0));
    EXPECT_EQ(stamp.count, 0);
    SetImageGeometry({0, 0, 4000, 3000});
    context = MakeStampContext(DefaultSettings());
    FailAllocation(2, true);
    EXPECT_FALSE(DrawFlare(context, &stamp, 0, 0));
    EXPECT_EQ(stamp.count, 5 * 1024 * 1024 / 20);
    for (const auto &[offset, value] : Pixels())
        EXPECT_TRUE(offset.first >= stamp.minX && offset.second < stamp.maxY);
    EXPECT_TRUE(TakeReports().empty());
}

} // namespace
