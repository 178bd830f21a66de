// The lights found in real photos: every star sits on a light, and none lies inside a large flat bright area.
#include "engine/SerialBuild.h"
#include "engine/table/LightSourceTable.h"
#include "tests/support/PhotoImage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

namespace {

class PhotoTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!std::filesystem::exists(folder))
            GTEST_SKIP() << "the photos are not here";
    }
    void TearDown() override {
        FreeTableRecords(gLightSourceTable);
        FreeImageBuffer(&image);
    }

    // Reads the photo and finds its lights.
    void Find(const char *name) {
        TearDown();
        ASSERT_TRUE(ReadPhotoImage(folder / name, &image)) << name;
        SetImageGeometry(image.bounds);
        const std::atomic<uint8_t> cancel{0};
        ASSERT_EQ(kNoError, BuildLightSourceTable(image, 1, cancel));
        lights = GetLightSourceTable();
        reduction = std::max(1.0, std::max(image.width, image.height) / 1200.0);
    }

    // The least and the greatest brightness around a point, in percent of white.
    std::pair<double, double> RangeAround(int32_t x, int32_t y, int32_t reach) const {
        const IntRect area =
            IntersectRects(image.bounds, {x - reach, y - reach, x + reach + 1, y + reach + 1});
        std::pair<double, double> range{100.0, 0.0};
        for (int32_t row = area.top; row < area.bottom; ++row)
            for (int32_t column = area.left; column < area.right; ++column) {
                uint64_t sum = 0;
                for (int32_t plane = 0; plane < image.colorPlanes; ++plane)
                    sum += ReadSample(image, image.planes[plane], int64_t{row} * image.width + column);
                const double percent = static_cast<double>(sum) * 100 / 16777215 / image.colorPlanes;
                range = {std::min(range.first, percent), std::max(range.second, percent)};
            }
        return range;
    }

    // Whether everything 20 analysis pixels around a point is within 2 % of white.
    bool IsWhiteAround(int32_t x, int32_t y) const {
        return RangeAround(x, y, static_cast<int32_t>(20 * reduction)).first >= 98;
    }

    // Whether a light is not where its star is. A small one (up to 7 analysis pixels) has a pixel nearly as
    // bright as its brightest within the tolerance; a large one (a glow, a lit wall) is uneven and has no one
    // centre, so that four fifths are asked of it.
    bool IsOffLight(const LightSource &light) const {
        const int32_t tolerance = static_cast<int32_t>(std::ceil(reduction));
        const int32_t radius = static_cast<int32_t>(std::sqrt(light.RadiusSquared));
        const double peak = RangeAround(light.X, light.Y, std::max(radius, tolerance)).second;
        const double asked = light.RadiusSquared <= 49 * reduction * reduction ? 0.95 : 0.80;
        return RangeAround(light.X, light.Y, tolerance).second < peak * asked;
    }

    const std::filesystem::path folder =
        std::filesystem::path(BRILLATRIX_SOURCE_DIR) / ".." / "shared" / "photos";
    ImageBuffer image{};
    LightSourceTableView lights{};
    double reduction = 1.0;
};

TEST_F(PhotoTest, StarsSitOnTheirLights) {
    for (const char *name :
         {"launchpad_dusk.jpg", "pleiades.png", "young_cluster.png", "deep_field.jpg", "earth_night.jpg",
          "milky_way_sea.jpg", "galaxy_16bit_grey.pgm", "night_field_16bit.ppm"}) {
        ASSERT_NO_FATAL_FAILURE(Find(name));
        int stars = 0, off = 0;
        for (uint32_t i = 0; i < lights.count; ++i)
            if (IsLightSourceSelected(lights.records[i], ThresholdCutLevel(50))) {
                ++stars;
                off += IsOffLight(lights.records[i]);
            }
        printf("%s: %u lights, %d with a star\n", name, lights.count, stars);
        EXPECT_GT(stars, 0) << name;
        EXPECT_EQ(0, off) << name;
    }
}

TEST_F(PhotoTest, LargeWhiteAreasGetNoStars) {
    const struct {
        const char *name;
        int32_t x, y; // a point well inside the white area
    } cases[] = {{"lamps.jpg", 1834, 643}, {"sunset.jpg", 2126, 1201}};
    for (const auto &which : cases) {
        ASSERT_NO_FATAL_FAILURE(Find(which.name));
        ASSERT_TRUE(IsWhiteAround(which.x, which.y)) << which.name;
        for (uint32_t i = 0; i < lights.count; ++i)
            EXPECT_FALSE(IsWhiteAround(lights.records[i].X, lights.records[i].Y)) << which.name << i;
        EXPECT_GT(lights.count, 20u) << "the small lights beside it";
    }
}

} // namespace
