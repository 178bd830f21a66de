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

TEST_F(ImageBufferTest, RefusesShapesThatCannotBe) {
    struct Case {
        int32_t bytes, transparency;
        IntRect bounds;
    };
    const IntRect good = {0, 0, 2, 2};
    const Case cases[] = {{1, 0, {0, 0, 0, 5}}, {1, 0, {0, 0, 5, 0}},
                          {1, 0, {5, 0, 4, 4}}, {1, 0, {INT32_MIN, 0, INT32_MAX, 1}},
                          {0, 0, good},         {1, 0, {0, INT32_MIN, 1, INT32_MAX}},
                          {3, 0, good},         {8, 0, good},
                          {-1, 0, good},        {1, -1, good},
                          {1, 2, good}};
    ImageBuffer buffer = Untouched();
    for (const Case &c : cases)
        EXPECT_EQ(AllocateImageBuffer(kModeRgb8, c.bytes, c.transparency, c.bounds, false, &buffer, nullptr),
                  kMemFullErr)
            << &c - cases;
    EXPECT_TRUE(IsUntouched(buffer));
}

TEST_F(ImageBufferTest, FailedAllocationLeavesTheBufferAloneAndSaysWhichPart) {
    const IntRect bounds = {0, 0, 9, 9};
    for (const int64_t failing : {1, 2}) {
        ImageBuffer buffer = Untouched();
        bool maskFailed = failing == 1;
        FailAllocation(failing, false);
        EXPECT_EQ(AllocateImageBuffer(kModeRgb16, 2, 1, bounds, true, &buffer, &maskFailed), kMemFullErr);
        EXPECT_EQ(maskFailed, failing == 2);
        EXPECT_TRUE(IsUntouched(buffer));
        EXPECT_EQ(BufferBytesInUse(), 0);
    }
    ImageBuffer buffer{};
    ASSERT_EQ(AllocateImageBuffer(kModeRgb16, 2, 1, bounds, true, &buffer, nullptr), kNoError);
    FreeImageBuffer(&buffer);
    FreeImageBuffer(&buffer); // twice is harmless
    EXPECT_EQ(buffer.pixels, nullptr);
}

} // namespace
