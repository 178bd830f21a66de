#include "diag/BufferUsage.h"
#include "tests/engine/TestImages.h"

#include <cstring>
#include <limits>

namespace {

using ImageBufferTest = EngineTest;

ImageBuffer Untouched() {
    ImageBuffer buffer;
    memset(static_cast<void *>(&buffer), 0x5A, sizeof buffer);
    return buffer;
}

bool IsUntouched(const ImageBuffer &buffer) {
    const ImageBuffer fresh = Untouched();
    return memcmp(&buffer, &fresh, sizeof buffer) == 0;
}

TEST_F(ImageBufferTest, DescribesPlanesOfEveryDepth) {
    for (const int32_t bytes : {1, 2, 4})
        for (const int32_t transparency : {0, 1})
            for (const int32_t mode : {kModeGray8, kModeRgb8}) {
                TestImage image(mode, bytes, transparency, IntRect{-3, 5, 4, 8}, true);
                const ImageBuffer &b = image.buffer;
                EXPECT_EQ(b.colorPlanes, mode == kModeGray8 ? 1 : 3);
                EXPECT_EQ(b.width, 7);
                EXPECT_EQ(b.height, 3);
                EXPECT_EQ(b.bitsPerSample, bytes * 8);
                EXPECT_EQ(b.pixelBytes, 21 * bytes * PlaneCount(b));
                EXPECT_EQ(b.maskBytes, 21);
                for (int32_t i = 0; i < kMaxPlanes; ++i)
                    EXPECT_EQ(b.planes[i], i < PlaneCount(b) ? b.pixels + i * bytes * 21 : nullptr);
                EXPECT_EQ(b.pixels[b.pixelBytes - 1], 0);
                EXPECT_EQ(b.mask[20], 0);
                EXPECT_EQ(BufferBytesInUse(), b.pixelBytes + b.maskBytes);
            }
}

TEST_F(ImageBufferTest, RefusesShapesThatCannotBe) {
    constexpr int32_t kLow = std::numeric_limits<int32_t>::min(), kHigh = std::numeric_limits<int32_t>::max();
    ImageBuffer buffer = Untouched();
    for (const IntRect &bounds : {IntRect{0, 0, 0, 5}, IntRect{0, 0, 5, 0}, IntRect{5, 0, 4, 4},
                                  IntRect{kLow, 0, kHigh, 1}, IntRect{0, kLow, 1, kHigh}})
        EXPECT_EQ(AllocateImageBuffer(kModeRgb8, 1, 0, bounds, false, &buffer, nullptr), kMemFullErr);
    for (const int32_t bytes : {0, 3, 8, -1})
        EXPECT_EQ(AllocateImageBuffer(kModeRgb8, bytes, 0, IntRect{0, 0, 2, 2}, false, &buffer, nullptr),
                  kMemFullErr);
    for (const int32_t planes : {-1, 2})
        EXPECT_EQ(AllocateImageBuffer(kModeRgb8, 1, planes, IntRect{0, 0, 2, 2}, false, &buffer, nullptr),
                  kMemFullErr);
    EXPECT_TRUE(IsUntouched(buffer));
}

TEST_F(ImageBufferTest, FailedAllocationLeavesTheBufferAloneAndSaysWhichPart) {
    for (const int64_t failing : {1, 2}) {
        ImageBuffer buffer = Untouched();
        bool maskFailed = failing == 1;
        FailAllocation(failing, false);
        EXPECT_EQ(AllocateImageBuffer(kModeRgb16, 2, 1, IntRect{0, 0, 9, 9}, true, &buffer, &maskFailed),
                  kMemFullErr);
        EXPECT_EQ(maskFailed, failing == 2);
        EXPECT_TRUE(IsUntouched(buffer));
        EXPECT_EQ(BufferBytesInUse(), 0);
    }
}

TEST_F(ImageBufferTest, FreeingTwiceIsHarmless) {
    ImageBuffer buffer{};
    FreeImageBuffer(&buffer);
    ASSERT_EQ(AllocateImageBuffer(kModeRgb8, 1, 0, IntRect{0, 0, 3, 3}, false, &buffer, nullptr), kNoError);
    FreeImageBuffer(&buffer);
    FreeImageBuffer(&buffer);
    EXPECT_EQ(buffer.pixels, nullptr);
}

} // namespace
