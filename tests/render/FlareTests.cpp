// The soft flare's values and rings.
#include "render/SoftFlare.h"
#include "render/SpikeProfile.h"
#include "tests/plain/StampEntries.h"
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
        FreeValueTable(&values);
        RenderTest::TearDown();
    }
    FlareStamp Draw(int32_t px, int32_t py) {
        FreeValueTable(&values);
        EXPECT_TRUE(BuildFlareTable(context, &values));
        return MakeFlare(context, px, py);
    }
    // Every entry by its offset; fails on a pixel that comes twice.
    std::map<std::pair<int, int>, uint32_t> Pixels(const FlareStamp &flare) const {
        std::map<std::pair<int, int>, uint32_t> pixels;
        for (const plain::StampEntry &entry : EntriesOf(context, flare, values)) {
            const bool first = pixels.emplace(std::pair(entry.dx, entry.dy), entry.value).second;
            EXPECT_TRUE(first) << entry.dx << " " << entry.dy;
        }
        return pixels;
    }
    StampContext context;
    ValueTable values{};
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

// The table holds what the library's power gives, at every distance, for flat and steep flares.
TEST_F(FlareTest, TableIsTheLibrarysToTheInteger) {
    for (const int16_t length : {0, 1, 37, 50, 99, 100})
        for (const int32_t diagonal : {2, 257, 3000}) {
            context.settings.length = length;
            context.diagonal = diagonal;
            context.imageWidth = diagonal;
            Draw(0, 0);
            for (uint32_t distance = 0; distance + 1 < values.count; ++distance)
                ASSERT_EQ(values.values[distance], FlareValueAt(context, distance))
                    << length << " " << distance;
            if (values.count > 1) {
                EXPECT_GE(values.values[values.count - 2], context.floor);
            }
        }
}

// Each pixel once, none missing inside the reach, each with its own distance from the phase point.
TEST_F(FlareTest, RingsHoldEveryBrightPixelOnce) {
    for (const auto &[px, py] : {std::pair(0, 0), std::pair(3, 0), std::pair(1, 2)}) {
        const FlareStamp flare = Draw(px, py);
        const auto pixels = Pixels(flare);
        ASSERT_GT(pixels.size(), 300u);
        for (int32_t y = -flare.rings - 1; y <= flare.rings + 1; ++y)
            for (int32_t x = -flare.rings - 1; x <= flare.rings + 1; ++x) {
                const uint32_t value = FlareValueAt(context, MeasureDistance(4 * x - px, 4 * y - py));
                const auto found = pixels.find({x, y});
                ASSERT_EQ(found != pixels.end(), value >= context.floor) << x << " " << y;
                if (found != pixels.end()) {
                    EXPECT_EQ(found->second, value);
                }
            }
    }
}

TEST_F(FlareTest, RingsEndAtTheImageWidthAndTheCentreIsAlwaysDrawn) {
    context.imageWidth = 3;
    EXPECT_EQ(Pixels(Draw(0, 0)).size(), 49u);
    context.floor = 0xFFFFFFFF;
    const FlareStamp flare = Draw(0, 0);
    EXPECT_TRUE(flare.centreIsForced);
    EXPECT_EQ(Pixels(flare), (std::map<std::pair<int, int>, uint32_t>{{{0, 0}, 67108604u}}));
}

TEST_F(FlareTest, ExhaustedMemoryEndsTheFlareSilently) {
    FailAllocation(1, false);
    EXPECT_FALSE(BuildFlareTable(context, &values));
    EXPECT_EQ(values.values, nullptr);
    EXPECT_TRUE(TakeReports().empty());
}

} // namespace
