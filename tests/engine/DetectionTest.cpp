// Candidates, refinement and flood fill: what one worker makes of small pictures.
#include "engine/Detection.h"

#include "engine/CandidateAnalysis.h"
#include "engine/FixedPoint.h"
#include "engine/FloodFill.h"
#include "engine/RadiusRefinement.h"
#include "tests/engine/TestWorker.h"

#include <cmath>
#include <cstring>

namespace {

struct DetectionTest : EngineTest {
    void SetUp() override {
        EngineTest::SetUp();
        gPreciseMode = true;
    }
};

double Distance(const LightSource &s, double x, double y) {
    return std::hypot(s.X + s.XQuarter * 0.25 - x, s.Y + s.YQuarter * 0.25 - y);
}

TEST_F(DetectionTest, AGaussianSpotIsFoundWithinAPixelAtEveryScale) {
    for (const int32_t side : {400, 1200, 2000, 3001}) {
        const double scale = std::max(side / 1200.0, 1.0);
        double previous = 0;
        for (const double sigma : {1.5, 5.0, 12.0}) {
            const int32_t height = side / 4;
            const Spot spot{side * 0.4 + 0.3, height * 0.55 - 0.2, sigma * scale, 240};
            const TestImage image = MakeSpots(side, height, {spot}, 10);
            const std::vector<LightSource> found = Detect(image.buffer);
            ASSERT_EQ(found.size(), 1u) << "side " << side << " sigma " << sigma;
            EXPECT_LE(Distance(found[0], spot.x, spot.y), scale) << "side " << side << " sigma " << sigma;
            EXPECT_EQ(found[0].State, 1u);
            const double radius = std::sqrt(found[0].RadiusSquared) / scale;
            EXPECT_GT(radius, previous);
            EXPECT_LT(radius, 2 * sigma);
            previous = radius;
        }
    }
}

TEST_F(DetectionTest, ADiskIsMeasuredNearItsRadius) {
    for (const double radius : {8.0, 15.0, 30.0}) {
        const TestImage image = MakeDisk(300, 140.3, 150.1, radius);
        const std::vector<LightSource> found = Detect(image.buffer);
        ASSERT_EQ(found.size(), 1u) << radius;
        EXPECT_LE(Distance(found[0], 140.3, 150.1), 1.0);
        EXPECT_NEAR(std::sqrt(found[0].RadiusSquared), radius - 0.7, 0.8);
    }
}

TEST_F(DetectionTest, BrighterAndLargerSpotsRankFirstAndColorsAreKept) {
    const TestImage image = MakeSpots(
        300, 300, {{60, 60, 3, 240, {1, 0.5, 0.25}}, {150, 60, 6, 240}, {240, 60, 3, 190}, {60, 200, 3, 240}},
        0);
    const std::vector<LightSource> found = Detect(image.buffer);
    ASSERT_EQ(found.size(), 3u); // the orange one is too dark on average
    EXPECT_LE(Distance(found[0], 150, 60), 1);
    EXPECT_LE(Distance(found[1], 60, 200), 1);
    EXPECT_LE(Distance(found[2], 240, 60), 1);
    const TestImage orange = MakeSpots(300, 300, {{60, 60, 5, 240, {1, 0.5, 0.25}}}, 0);
    const std::vector<LightSource> alone = Detect(orange.buffer);
    ASSERT_EQ(alone.size(), 1u);
    EXPECT_EQ(alone[0].Red, kFractionOne);
    EXPECT_NEAR(static_cast<double>(alone[0].Green) / alone[0].Red, 0.5, 0.02);
    EXPECT_NEAR(static_cast<double>(alone[0].Blue) / alone[0].Red, 0.25, 0.02);
}

TEST_F(DetectionTest, FlatAreasGiveNoSource) {
    const auto count = [](const std::function<uint8_t(int, int)> &valueAt) {
        const TestImage image = MakeGrayRgb(700, 500, valueAt);
        return Detect(image.buffer).size();
    };
    EXPECT_EQ(count([](int, int) { return uint8_t{255}; }), 0u);
    EXPECT_EQ(count([](int, int) { return uint8_t{0}; }), 0u);
    EXPECT_EQ(count([](int x, int y) { return static_cast<uint8_t>(180 + (x + 2 * y) * 75 / 1700); }), 0u);
    EXPECT_EQ(count([](int x, int y) {
                  return static_cast<uint8_t>(std::hypot(x - 350, y - 250) < 200 ? 255 : 5);
              }),
              0u);
}

TEST_F(DetectionTest, ASpotBesideAFlatAreaIsStillFound) {
    const TestImage image = MakeGrayRgb(700, 500, [](int x, int y) {
        const bool isSpot = std::hypot(x - 600, y - 250) < 6;
        return static_cast<uint8_t>(isSpot || std::hypot(x - 250, y - 250) < 200 ? 255 : 5);
    });
    const std::vector<LightSource> found = Detect(image.buffer);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_LE(Distance(found[0], 600, 250), 1);
}

TEST_F(DetectionTest, ASpotWiderThanSixtyFourPixelsIsDropped) {
    for (const double radius : {58.0, 80.0}) {
        const TestImage image = MakeDisk(400, 200, 200, radius);
        EXPECT_EQ(Detect(image.buffer).size(), radius < 64 ? 1u : 0u) << radius;
    }
    const TestImage wide = MakeSpots(500, 500, {{250, 250, 110, 245}}, 5);
    for (const LightSource &s : Detect(wide.buffer))
        EXPECT_LE(s.RadiusSquared, 65 * 65);
}

TEST_F(DetectionTest, EquallyBrightNeighborsAreOneSource) {
    const TestImage image = MakeGrayRgb(60, 60, [](int x, int y) {
        const int ring = std::max(x < 30 ? 30 - x : x - 31, std::abs(y - 30));
        return static_cast<uint8_t>(std::max(250 - 90 * ring, 0));
    });
    const std::vector<LightSource> found = Detect(image.buffer);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_LE(Distance(found[0], 30.5, 30), 1);
}

TEST_F(DetectionTest, ACenterOutsideTheSelectionIsKeptDisabledAndNotMerged) {
    const TestImage disk = MakeDisk(80, 40, 40, 8);
    TestImage masked(kModeRgb8, 1, 0, disk.buffer.bounds, true);
    memcpy(masked.buffer.pixels, disk.buffer.pixels, static_cast<size_t>(disk.buffer.pixelBytes));
    for (int32_t i = 0; i < 6400; ++i)
        masked.buffer.mask[i] = std::abs(i % 80 - 40) <= 2 && std::abs(i / 80 - 40) <= 2 ? 0 : 255;
    TestWorker worker(masked.buffer);
    ScanBand(&worker.context);
    const std::vector<LightSource> found = worker.Sources();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_LE(Distance(found[0], 40, 40), 1);
    EXPECT_EQ(found[0].State, 0u);
    EXPECT_TRUE(Detect(masked.buffer).empty());
}

TEST_F(DetectionTest, UnselectedAndTransparentPixelsAreNoCandidates) {
    const TestImage spot = MakeSpots(80, 80, {{40, 40, 3, 240}}, 5);
    ASSERT_EQ(Detect(spot.buffer).size(), 1u);
    for (const bool byMask : {false, true}) {
        TestImage covered(kModeRgb8, 1, byMask ? 0 : 1, spot.buffer.bounds, byMask);
        memcpy(covered.buffer.pixels, spot.buffer.pixels, static_cast<size_t>(spot.buffer.pixelBytes));
        if (byMask)
            memset(covered.buffer.mask, 127, 6400);
        EXPECT_TRUE(Detect(covered.buffer).empty());
        memset(byMask ? covered.buffer.mask : covered.buffer.planes[3], byMask ? 128 : 1, 6400);
        EXPECT_EQ(Detect(covered.buffer).size(), 1u);
    }
}

TEST_F(DetectionTest, ASpotCutByTheEdgeIsDropped) {
    for (const double x : {0.0, 1.0, 99.0}) {
        const TestImage image = MakeSpots(100, 100, {{x, 50, 4, 240}}, 5);
        EXPECT_TRUE(Detect(image.buffer).empty()) << x;
    }
}

TEST_F(DetectionTest, SmallRingsPassTheContrastTestOnlyInsideTheBounds) {
    const TestImage black = MakeGrayRgb(50, 50, [](int, int) { return 0; });
    const TestWorker worker(black.buffer);
    EXPECT_TRUE(
        PassesRingContrast(worker.context, LightSourcePosition{49, 3, 0, 0}, 0.3)); // too small to test
    EXPECT_FALSE(PassesRingContrast(worker.context, LightSourcePosition{50, 0, 0, 0}, 0.3));
    EXPECT_FALSE(PassesRingContrast(worker.context, LightSourcePosition{20, 0, -1, 3}, 0.3));
    EXPECT_FALSE(
        PassesRingContrast(worker.context, LightSourcePosition{20, 0, 20, 0}, 8)); // 0 is not below 0
    EXPECT_FALSE(
        PassesRingContrast(worker.context, LightSourcePosition{20, 0, 20, 0}, 90)); // rings past the last
}

TEST_F(DetectionTest, ALargeRingPassesWhenTheOutsideIsATenthDarkerThanTheInside) {
    // Brightest 255, inside 100: (255 - 100) × 11 = 1705 against (255 - outside) × 10.
    for (const uint8_t outside : {84, 85}) {
        const TestImage image = MakeGrayRgb(60, 60, [outside](int x, int y) {
            const double distance = std::hypot(x - 30, y - 30);
            return distance < 1 ? uint8_t{255} : distance < 11 ? uint8_t{100} : outside;
        });
        const TestWorker worker(image.buffer);
        EXPECT_EQ(PassesRingContrast(worker.context, LightSourcePosition{30, 0, 30, 0}, 10), outside == 84);
    }
}

TEST_F(DetectionTest, BrightnessIsTheInsideSquaredTwiceTimesTheRelativeRadius) {
    const TestImage white = MakeGrayRgb(200, 200, [](int, int) { return 255; });
    const TestWorker worker(white.buffer);
    uint32_t levels[3];
    for (const double radius : {4.0, 16.0, 64.0}) {
        MeasureColorLevels(worker.context, LightSourcePosition{100, 0, 100, 0}, radius, levels);
        const double expected = std::min(radius / 64, 1.0); // (√(R/64) × 1)²
        for (const uint32_t level : levels)
            EXPECT_NEAR(level / 4294967296.0, expected, 1e-6);
    }
    // Past the last shape: colour and level take their fixed values, the level not shifted up.
    MeasureColorLevels(worker.context, LightSourcePosition{100, 0, 100, 0}, 97.0, levels);
    const uint32_t squared = MulPrecise(0xFFFFFF, 0xFFFFFF);
    EXPECT_EQ(levels[0], MulPrecise(0xFFFFFFFE, MulPrecise(squared, squared)));
}

TEST_F(DetectionTest, ARefinementOutsideThePictureChangesNothing) {
    const TestImage white = MakeGrayRgb(20, 20, [](int, int) { return 255; });
    const TestWorker worker(white.buffer);
    LightSourcePosition center{500, 3, 500, 1};
    double radius = 5.0;
    EXPECT_TRUE(RefineRadius(worker.context, &center, &radius));
    EXPECT_EQ(radius, 5.0);
    EXPECT_EQ(center.X, 501);
    EXPECT_EQ(center.XQuarter, 0);
    EXPECT_EQ(center.Y, 500);
    center = LightSourcePosition{10, 3, 10, 3};
    radius = -0.5; // quarter steps, and no ring to measure
    EXPECT_TRUE(RefineRadius(worker.context, &center, &radius));
    EXPECT_EQ(center.XQuarter, 3);
}

struct LockCount {
    int locks = 0, unlocks = 0;
    std::atomic<uint8_t> *cancelWhenLocked = nullptr;
};

ImageLock CountLocks(LockCount *count) {
    return ImageLock{[](void *owner) {
                         auto *c = static_cast<LockCount *>(owner);
                         ++c->locks;
                         if (c->cancelWhenLocked)
                             *c->cancelWhenLocked = 1;
                     },
                     [](void *owner) { ++static_cast<LockCount *>(owner)->unlocks; }, count};
}

bool IsMarked(const AnalysisImage &image, int32_t x, int32_t y) {
    return FetchPixel(image, x, y).selectionLevel == 0;
}

TEST_F(DetectionTest, AWhitePictureIsFilledOnceAndWhole) {
    const TestImage white = MakeGrayRgb(1200, 1200, [](int, int) { return 255; });
    TestWorker worker(white.buffer);
    LockCount count;
    worker.shared.imageLock = CountLocks(&count);
    ScanBand(&worker.context);
    EXPECT_EQ(count.locks, 1);
    EXPECT_EQ(count.unlocks, 1);
    EXPECT_EQ(worker.shared.rowsDone, 1200u);
    int64_t marked = 0;
    for (int32_t y = 0; y < 1200; ++y)
        for (int32_t x = 0; x < 1200; ++x)
            marked += IsMarked(worker.shared.image, x, y);
    EXPECT_EQ(marked, 1200 * 1200);
    EXPECT_TRUE(worker.Sources().empty());
    EXPECT_EQ(white.buffer.pixels[0], 255); // the picture itself is never marked
}

TEST_F(DetectionTest, AFillStopsAtOtherColorsGapsAndUnselectedPixels) {
    TestImage image(kModeRgb8, 1, 0, IntRect{0, 0, 7, 3}, true);
    const uint8_t red[21] = {160, 160, 180, 181, 160, 160, 160, //
                             160, 160, 160, 140, 139, 160, 160, //
                             160, 160, 160, 160, 160, 160, 160};
    for (int32_t i = 0; i < 21; ++i) {
        image.buffer.planes[0][i] = red[i];
        image.buffer.planes[1][i] = image.buffer.planes[2][i] = 80;
        image.buffer.mask[i] = i >= 14 ? 0 : 1; // the last row is not selected at all; a trace is enough
    }
    TestWorker worker(image.buffer);
    FillFlatArea(&worker.context, 0, 0, FetchPixel(worker.shared.image, 0, 0));
    // 160 / 8 = 20: 180 and 140 belong, 181 and 139 do not, and the diagonal past them is no way through.
    const bool expected[14] = {true, true, true, false, false, false, false,
                               true, true, true, true,  false, false, false};
    for (int32_t i = 0; i < 14; ++i)
        EXPECT_EQ(IsMarked(worker.shared.image, i % 7, i / 7), expected[i]) << i;
    for (int32_t x = 0; x < 7; ++x)
        EXPECT_EQ(FetchPixel(worker.shared.image, x, 2).red, WorkingFrom8(160));
}

TEST_F(DetectionTest, AFillWithoutMemoryIsReportedAndStops) {
    const TestImage white = MakeGrayRgb(400, 400, [](int, int) { return 255; });
    for (const int64_t failing : {1, 2}) {
        TestWorker worker(white.buffer);
        LockCount count;
        worker.shared.imageLock = CountLocks(&count);
        FailAllocation(failing, false);
        FillFlatArea(&worker.context, 0, 0, FetchPixel(worker.shared.image, 0, 0));
        FailAllocation(0, false);
        const std::vector<RecordedReport> reports = TakeReports();
        if (worker.context.result == kNoError) { // the whole list fitted into its first piece
            EXPECT_EQ(failing, 2);
            EXPECT_TRUE(reports.empty());
            continue;
        }
        EXPECT_EQ(worker.context.result, kMemFullErr);
        EXPECT_EQ(count.unlocks, 1);
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].record.line, 1081u);
        EXPECT_EQ(reports[0].record.kind, kUserMessage);
        EXPECT_EQ(reports[0].title, "Error - Exiting Plugin");
        EXPECT_EQ(reports[0].message, "Unable to allocate memory for a flood fill list.");
    }
}

TEST_F(DetectionTest, AScanStopsAtThePixelThatFollowsACancel) {
    const TestImage image =
        MakeGrayRgb(300, 300, [](int, int y) { return static_cast<uint8_t>(y < 10 ? 0 : 255); });
    TestWorker worker(image.buffer);
    LockCount count;
    count.cancelWhenLocked = &worker.cancel;
    worker.shared.imageLock = CountLocks(&count);
    ScanBand(&worker.context);
    EXPECT_EQ(worker.shared.rowsDone, 10u);
    ScanBand(&worker.context); // cancelled before it starts
    EXPECT_EQ(worker.shared.rowsDone, 10u);
}

TEST_F(DetectionTest, AWorkerKeepsAMemoryFailureOfItsTable) {
    const TestImage image = MakeSpots(80, 80, {{40, 40, 3, 240}}, 5);
    TestWorker worker(image.buffer);
    FailAllocation(1, true);
    ScanBand(&worker.context);
    FailAllocation(0, false);
    EXPECT_EQ(worker.context.result, kMemFullErr);
    EXPECT_TRUE(worker.Sources().empty());
}

} // namespace
