// Several workers at once: one table for each number of workers, that of the bands scanned one after another.
#include "engine/SerialBuild.h"
#include "tests/engine/TestImages.h"
#include "tests/support/ThreadedBuild.h"

#include "diag/BufferUsage.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <random>

namespace {

const bool kIsLong = std::getenv("BRILLATRIX_TEST_LONG") != nullptr;

// Bright areas that lie across bands. The wide ones are flat and take with them the narrow ones that touch
// them, which would be lights to a band that does not know of the wide ones yet.
TestImage MakeFlatAreas(uint32_t seed) {
    std::mt19937 random(seed);
    const auto pick = [&random](int low, int high) {
        return low + static_cast<int>(random() % static_cast<uint32_t>(high - low + 1));
    };
    const int width = pick(160, 420), height = pick(40, 300), noise = pick(0, 2);
    std::vector<Spot> spots;
    for (int i = pick(0, 25); i > 0; --i)
        spots.push_back(
            {1.0 * pick(0, width), 1.0 * pick(0, height), pick(4, 40) / 10.0, 1.0 * pick(20, 240)});
    TestImage image = MakeSpots(width, height, spots, static_cast<uint8_t>(pick(0, 1) * 40));
    for (int i = pick(2, 14); i > 0; --i) {
        const bool isWide = pick(0, 2) == 0;
        const int left = isWide ? pick(-60, width - 140) : pick(0, width), top = pick(-60, height);
        const int right = left + (isWide ? pick(140, 400) : pick(3, 50)), slant = pick(-1, 1);
        const int bottom = top + (isWide ? pick(1, 60) : pick(3, 200)), value = pick(0, 5) == 0 ? 200 : 245;
        for (int y = std::max(top, 0); y < std::min(bottom, height); ++y)
            for (int x = std::max(left + slant * (y - top), 0); x < std::min(right, width); ++x)
                for (int plane = 0; plane < 3; ++plane)
                    image.buffer.planes[plane][y * width + x] =
                        static_cast<uint8_t>(value + pick(-noise, noise));
    }
    return image;
}

struct BandOrderTest : EngineTest {
    ThreadedBuild threaded;
    // Ahead in the given order on this thread: what an earlier band marks comes as late as it can.
    std::vector<LightSource> DetectInOrder(const ImageBuffer &image, const std::vector<int> &order,
                                           HostResult *result) {
        *result =
            threaded.Run(image, static_cast<int32_t>(order.size()), cancel, [&order](TableBuild *build) {
                for (const int worker : order)
                    ScanBandAhead(&build->workers[worker]);
            });
        return GlobalSources();
    }
};

TEST_F(BandOrderTest, WhateverOrderTheBandsAreScannedInTheTableIsTheSame) {
    int scannedAgain = 0;
    for (uint32_t seed = 0; seed < (kIsLong ? 100u : 12u); ++seed) {
        const TestImage image = MakeFlatAreas(seed == 0 ? 418 : seed); // where a ring reaches far up
        for (int workers = 1; workers <= kMaxWorkers; ++workers) {
            const std::vector<LightSource> serial = Detect(image.buffer, workers);
            std::vector<int> order(static_cast<size_t>(workers));
            std::iota(order.rbegin(), order.rend(), 0);
            do {
                HostResult result;
                ASSERT_TRUE(SameSources(DetectInOrder(image.buffer, order, &result), serial))
                    << "seed " << seed << ", " << workers << " workers, band " << order[0] << " first";
            } while (std::prev_permutation(order.begin(), order.end()) && (kIsLong || order[0] > 1));
            scannedAgain += !SameSources(serial, Detect(image.buffer, 1));
        }
    }
    EXPECT_GT(scannedAgain, 0) << "no picture tells the bands' order";
}

TEST_F(BandOrderTest, EachRowCountsOnceAndACancelEndsEveryPart) {
    const TestImage image = MakeFlatAreas(3);
    for (int cancelAt = 0; cancelAt < 4; ++cancelAt) {
        const HostResult result = threaded.Run(image.buffer, 3, cancel, [&](TableBuild *build) {
            for (const int worker : {2, 1, 0}) {
                cancel = cancel || worker == cancelAt;
                ScanBandAhead(&build->workers[worker]);
            }
        });
        // The row between two bands belongs to neither.
        EXPECT_EQ(threaded.build.shared.rowsDone == threaded.build.shared.rowsTotal - 2, !cancel);
        EXPECT_LE(threaded.build.shared.rowsDone, threaded.build.shared.rowsTotal - 2);
        EXPECT_EQ(result, cancel ? kUserCanceledErr : kNoError);
        EXPECT_EQ(GlobalSources().empty(), cancel != 0);
        cancel = 0;
    }
}

// A scan ahead that runs out of memory is no failure: the band is scanned again, in order.
TEST_F(BandOrderTest, EveryFailingAllocationIsToldOrHarmless) {
    const TestImage image = MakeFlatAreas(3);
    const std::vector<LightSource> good = Detect(image.buffer, 3);
    FreeTableRecords(gLightSourceTable);
    const int64_t pictureBytes = BufferBytesInUse();
    int told = 0;
    for (int64_t n = 1; n <= 400; n += n < 24 ? 1 : 29) {
        FailAllocation(n, n % 3 == 0);
        HostResult result;
        const std::vector<LightSource> found = DetectInOrder(image.buffer, {2, 1, 0}, &result);
        FailAllocation(0, false);
        told += result != kNoError;
        EXPECT_TRUE(result != kNoError || SameSources(found, good)) << "allocation " << n;
        FreeTableRecords(gLightSourceTable);
        ASSERT_EQ(BufferBytesInUse(), pictureBytes) << "allocation " << n;
    }
    EXPECT_GT(told, 10);
    TakeReports();
}

} // namespace
