// The lights found in real photos: every star sits on a light, and none lies inside a large flat bright area.
#include "engine/SerialBuild.h"
#include "engine/table/LightSourceTable.h"
#include "host/pictures/PictureFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <string>

namespace {

std::filesystem::path PhotoFolder() {
    return std::filesystem::path(BRILLATRIX_SOURCE_DIR) / ".." / "shared" / "photos";
}

class PhotoTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!std::filesystem::exists(PhotoFolder()))
            GTEST_SKIP() << "the photos are not here";
    }
    void TearDown() override {
        if (gLightSourceTable)
            FreeTableRecords(gLightSourceTable);
        FreeImageBuffer(&image);
    }

    // Reads the photo and finds its lights.
    void Find(const char *name) {
        host::Picture picture;
        std::string why;
        ASSERT_TRUE(host::ReadPicture((PhotoFolder() / name).wstring(), &picture, &why)) << why;
        const host::Document document = host::TakeDocument(picture);
        const int32_t mode = document.colourPlanes == 1 ? kModeGray8 : kModeRgb8;
        bool maskFailed = false;
        ASSERT_EQ(kNoError,
                  AllocateImageBuffer(mode, host::BytesPerSample(document), 0,
                                      {0, 0, document.width, document.height}, false, &image, &maskFailed));
        for (int32_t plane = 0; plane < image.colorPlanes; ++plane)
            memcpy(image.planes[plane], document.planes[plane].data(), document.planes[plane].size());
        SetImageGeometry(image.bounds);
        const std::atomic<uint8_t> cancel{0};
        ASSERT_EQ(kNoError, BuildLightSourceTable(image, 1, cancel));
        lights = GetLightSourceTable();
        reduction = std::max(1.0, std::max(image.width, image.height) / 1200.0);
    }

    uint64_t BrightnessAt(int32_t x, int32_t y) const {
        const int64_t index = int64_t{y} * image.width + x;
        uint64_t sum = 0;
        for (int32_t plane = 0; plane < image.colorPlanes; ++plane)
            sum += ReadSample(image, image.planes[plane], index);
        return sum;
    }

    IntRect Around(int32_t x, int32_t y, int32_t reach) const {
        return IntersectRects(image.bounds, {x - reach, y - reach, x + reach + 1, y + reach + 1});
    }

    uint64_t BrightestWithin(int32_t x, int32_t y, int32_t reach) const {
        const IntRect area = Around(x, y, reach);
        uint64_t most = 0;
        for (int32_t row = area.top; row < area.bottom; ++row)
            for (int32_t column = area.left; column < area.right; ++column)
                most = std::max(most, BrightnessAt(column, row));
        return most;
    }

    // Whether every pixel around a point is within 2 % of white.
    bool IsWhiteAround(int32_t x, int32_t y, int32_t reach) const {
        const IntRect area = Around(x, y, reach);
        const uint64_t white = uint64_t{16777215} * static_cast<uint64_t>(image.colorPlanes);
        for (int32_t row = area.top; row < area.bottom; ++row)
            for (int32_t column = area.left; column < area.right; ++column)
                if (BrightnessAt(column, row) * 100 < white * 98)
                    return false;
        return true;
    }

    // How many sources with a star at the default threshold are not on their light. A small light (up to 7
    // analysis pixels) has a pixel nearly as bright as its brightest within the tolerance; a large one (a
    // glow, a lit wall) is uneven and has no one centre, so that four fifths are asked of it.
    int32_t CountOffLight(uint32_t *stars) const {
        const uint32_t cut = ThresholdCutLevel(50);
        const int32_t tolerance = static_cast<int32_t>(std::ceil(reduction));
        int32_t off = 0;
        *stars = 0;
        for (uint32_t i = 0; i < lights.count; ++i) {
            const LightSource &light = lights.records[i];
            if (!IsLightSourceSelected(light, cut))
                continue;
            ++*stars;
            const int32_t radius = static_cast<int32_t>(std::sqrt(light.RadiusSquared));
            const uint64_t peak = BrightestWithin(light.X, light.Y, std::max(radius, tolerance));
            const uint64_t percent = light.RadiusSquared <= 49 * reduction * reduction ? 95 : 80;
            off += BrightestWithin(light.X, light.Y, tolerance) * 100 < peak * percent;
        }
        return off;
    }

    // Sources that lie in flat white at least 20 analysis pixels in every direction.
    uint32_t CountInFlatWhite() const {
        uint32_t inside = 0;
        for (uint32_t i = 0; i < lights.count; ++i)
            inside +=
                IsWhiteAround(lights.records[i].X, lights.records[i].Y, static_cast<int32_t>(20 * reduction));
        return inside;
    }

    ImageBuffer image{};
    LightSourceTableView lights{};
    double reduction = 1.0;
};

TEST_F(PhotoTest, StarsSitOnTheirLights) {
    for (const char *name :
         {"launchpad_dusk.jpg", "pleiades.png", "young_cluster.png", "deep_field.jpg", "earth_night.jpg",
          "milky_way_sea.jpg", "galaxy_16bit_grey.pgm", "night_field_16bit.ppm"}) {
        SCOPED_TRACE(name);
        Find(name);
        if (HasFatalFailure())
            return;
        uint32_t stars = 0;
        const int32_t off = CountOffLight(&stars);
        printf("%s: %u lights, %u with a star\n", name, lights.count, stars);
        EXPECT_GT(stars, 0u);
        EXPECT_EQ(0, off);
        FreeTableRecords(gLightSourceTable);
        FreeImageBuffer(&image);
    }
}

TEST_F(PhotoTest, LargeWhiteAreasGetNoStars) {
    const struct {
        const char *name;
        int32_t x, y; // a point well inside the white area
    } cases[] = {{"lamps.jpg", 1834, 643}, {"sunset.jpg", 2126, 1201}};
    for (const auto &which : cases) {
        SCOPED_TRACE(which.name);
        Find(which.name);
        if (HasFatalFailure())
            return;
        ASSERT_TRUE(IsWhiteAround(which.x, which.y, static_cast<int32_t>(20 * reduction)));
        EXPECT_EQ(0u, CountInFlatWhite());
        EXPECT_GT(lights.count, 20u) << "the small lights beside it";
        FreeTableRecords(gLightSourceTable);
        FreeImageBuffer(&image);
    }
}

} // namespace
