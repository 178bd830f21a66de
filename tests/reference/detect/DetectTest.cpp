// The analysis image and the whole ranked table against the yardstick.
#include "engine/SerialBuild.h"
#include "engine/image/AnalysisImage.h"
#include "tests/reference/Cases.h"
#include "tests/reference/NightScene.h"
#include "tests/reference/detect/ReferenceDetect.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/StandardThreads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>

namespace {

using cases::Picture;
using cases::PictureKind;
using cases::Random;
using cases::SceneFlavor;

const std::atomic<uint8_t> kNoCancel{0};

class Detection : public testing::Test {
protected:
    void TearDown() override {
        EXPECT_TRUE(TakeReports().empty());
        if (gLightSourceTable)
            FreeTableRecords(gLightSourceTable);
    }
};

void ExpectSameAnalysis(const AnalysisImage &product, const reference::Analysis &expected) {
    ASSERT_EQ(std::memcmp(&product.bounds, &expected.bounds, sizeof(IntRect)), 0);
    ASSERT_EQ(product.scale, expected.scale);
    for (size_t i = 0; i < expected.samples.size(); ++i)
        ASSERT_EQ(std::memcmp(&product.samples[i], &expected.samples[i], sizeof(PixelSample)), 0) << i;
    ASSERT_EQ(product.maxBrightness, expected.maxBrightness);
}

void CompareAnalysis(const ImageBuffer &image) {
    AnalysisImage product{};
    const reference::Analysis expected = reference::PrepareAnalysis(image);
    for (const int32_t workers : {1, 3}) {
        ASSERT_EQ(PrepareAnalysisImage(image, kNoCancel, &product, StandardThreads(workers)), kNoError);
        ExpectSameAnalysis(product, expected);
        FreeAnalysisImage(&product);
    }
}

// A picture of random kind, somewhere in its document.
Picture PickPicture(Random *random, int64_t width, int64_t height) {
    const PictureKind kind = cases::PickKind(random);
    const auto left = static_cast<int32_t>(random->Chance(40) ? 0 : random->Pick(-3000, 3000));
    const auto top = static_cast<int32_t>(random->Chance(40) ? 0 : random->Pick(-3000, 3000));
    const IntRect bounds{left, top, left + static_cast<int32_t>(width), top + static_cast<int32_t>(height)};
    return Picture(kind.mode, kind.bytesPerSample, kind.transparencyPlanes, bounds, kind.mask);
}

TEST_F(Detection, AnalysisImageWithoutReduction) {
    for (int i = 0; i < cases::Count(60); ++i) {
        Random random(70, i);
        const int64_t width = random.Pick(1, 80);
        const Picture image = PickPicture(&random, width, random.OneOf({1, 7, 40, 1200}));
        cases::FillAtRandom(&random, image.buffer);
        ASSERT_NO_FATAL_FAILURE(CompareAnalysis(image.buffer)) << "case " << i;
    }
}

// Whole scales put many averages exactly between two numbers, odd ones leave slivers of pixels.
TEST_F(Detection, ReducedAnalysisImage) {
    for (int i = 0; i < cases::Count(80); ++i) {
        Random random(71, i);
        const auto longer = static_cast<int32_t>(
            random.Chance(20) ? random.Pick(1201, 1204)
                              : random.OneOf({1250, 1500, 1799, 1800, 2400, 2401, 3000, 3600, 3601, 4800,
                                              6000, 6007, 9600, 19200, 32767}));
        const auto shorter = static_cast<int32_t>(random.Pick(1, longer > 5000 ? 9 : 30));
        const bool tall = random.Chance(50);
        const Picture image = PickPicture(&random, tall ? shorter : longer, tall ? longer : shorter);
        cases::FillAtRandom(&random, image.buffer);
        ASSERT_NO_FATAL_FAILURE(CompareAnalysis(image.buffer)) << "case " << i;
    }
}

void ExpectSameTable(const LightSourceTable &product, const reference::Table &expected) {
    for (uint32_t i = 0; i < std::min<size_t>(product.Count, expected.size()); ++i)
        ASSERT_EQ(std::memcmp(&product.records[i], &expected[i], sizeof(LightSource)), 0) << "record " << i;
    ASSERT_EQ(product.Count, expected.size());
}

void CompareTable(const ImageBuffer &image, int32_t workers) {
    SCOPED_TRACE(testing::Message() << workers << " workers");
    ASSERT_EQ(BuildLightSourceTable(image, workers, kNoCancel), kNoError);
    ASSERT_NE(gLightSourceTable, nullptr);
    ExpectSameTable(*gLightSourceTable, reference::BuildTable(image, workers));
}

// Of all sorts and sizes; some wide enough for flat areas to be filled and for lights of the largest radius,
// some that are reduced.
TEST_F(Detection, NightScenes) {
    const int usual = cases::Count(160);
    int lights = 0;
    for (int i = 0; i < usual; ++i) {
        Random random(72, i);
        const int32_t longest = random.OneOf({30, 90, 90, 160});
        const int64_t shortest = random.Chance(20) ? 1 : longest / 2;
        int64_t width = random.Pick(shortest, longest), height = random.Pick(shortest, longest);
        auto flavor = static_cast<SceneFlavor>(i % cases::kSceneFlavors);
        if (i % 25 == 0) {
            width = random.Pick(200, 340), height = random.Pick(200, 340);
            flavor = random.OneOf({SceneFlavor::kFlatAreas, SceneFlavor::kDiscs, SceneFlavor::kSpots});
        } else if (i % 40 == 1) {
            width = random.Pick(1201, 2600), height = random.Pick(40, 90);
            flavor = SceneFlavor::kSpots;
        }
        const Picture image = PickPicture(&random, width, height);
        cases::PaintNightScene(&random, flavor, image.buffer);
        ASSERT_NO_FATAL_FAILURE(CompareTable(image.buffer, static_cast<int32_t>(random.Pick(1, 4))))
            << "case " << i;
        lights += static_cast<int>(gLightSourceTable->Count);
    }
    EXPECT_GT(lights, usual);
}

// Chequers of a few colours, wide and narrow: every pixel is a candidate, many ways to a centre meet, and
// flat areas are taken out between them.
TEST_F(Detection, Chequers) {
    for (int i = 0; i < cases::Count(16); ++i) {
        Random random(76, i);
        const Picture image = PickPicture(&random, random.Pick(100, 220), random.Pick(100, 220));
        const int64_t side = random.OneOf({3, 9, 20, 41, 70, 150}), shift = random.Pick(0, 99);
        const int64_t colors = random.Pick(2, 4);
        uint8_t looks[4][4]; // of each colour: a byte a plane
        for (auto &look : looks)
            for (uint8_t &byte : look)
                byte = static_cast<uint8_t>(random.OneOf({0, 1, 55, 56, 62, 63}));
        cases::FillBytes(image.buffer, 63);
        for (int64_t p = 0; p < image.buffer.planeSize * PlaneCount(image.buffer); ++p) {
            const int64_t at = p % image.buffer.planeSize;
            const int64_t x = at % image.buffer.width + shift, y = at / image.buffer.width + shift;
            const uint8_t *look = looks[(x / side + y / side * (colors - 1)) % colors];
            // The last byte of a sample weighs most: 63 makes a float of nearly 1.
            image.buffer.pixels[(p + 1) * image.buffer.bytesPerSample - 1] = look[p / image.buffer.planeSize];
        }
        ASSERT_NO_FATAL_FAILURE(CompareTable(image.buffer, static_cast<int32_t>(random.Pick(1, 4))))
            << "case " << i;
    }
}

} // namespace
