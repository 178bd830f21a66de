// The analysis image where no comparison with the yardstick goes: its limits, failures and cancelling.
#include "engine/image/AnalysisImage.h"

#include "diag/BufferUsage.h"
#include "tests/engine/TestImages.h"

#include <algorithm>
#include <cstring>

namespace {

using AnalysisImageTest = EngineTest;

TEST_F(AnalysisImageTest, AThinPictureBesideTheOriginKeepsAPixel) {
    for (int32_t top = -28; top <= 1; ++top)
        for (const bool isTall : {false, true}) {
            const IntRect wide = {0, top, 32767, top + 1}, tall = {top, 0, top + 1, 32767};
            TestImage image(kModeGray8, 1, 0, isTall ? tall : wide, false);
            std::fill_n(image.buffer.pixels, image.buffer.pixelBytes, uint8_t{70});
            const TestWorker worker(image.buffer);
            const IntRect &bounds = worker.shared.image.bounds;
            EXPECT_EQ((bounds.right - bounds.left) * (bounds.bottom - bounds.top), 1200) << top;
            EXPECT_EQ(FetchPixel(worker.shared.image, bounds.left, bounds.top).red, WorkingFrom8(70)) << top;
        }
}

TEST_F(AnalysisImageTest, NothingIsReadOrMarkedOutsideAndThePictureKeepsItsSamples) {
    const TestImage picture = MakeGrayRgb(3, 2, [](int, int) { return 9; });
    TestWorker worker(picture.buffer);
    AnalysisImage &image = worker.shared.image;
    for (const auto &[x, y] : {std::pair{-1, 0}, {3, 0}, {0, -1}, {0, 2}, {INT32_MIN, INT32_MAX}}) {
        MarkPixel(&image, x, y);
        const PixelSample outside = FetchPixel(image, x, y), none = {0, 0, 0, 0, 0};
        EXPECT_EQ(memcmp(&outside, &none, sizeof none), 0);
    }
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(FetchPixel(image, i % 3, i / 3).red, WorkingFrom8(9)) << i;
    MarkPixel(&image, 2, 1);
    EXPECT_FALSE(IsPixelSelected(FetchPixel(image, 2, 1)));
    EXPECT_EQ(picture.buffer.planes[0][5], 9);
}

TEST_F(AnalysisImageTest, FailuresLeaveTheOutputAlone) {
    AnalysisImage untouched{};
    untouched.maxBrightness = 77;
    AnalysisImage out = untouched;
    const ImageBuffer nothing{};
    EXPECT_EQ(PrepareAnalysisImage(nothing, cancel, &out), kParamErr);
    TestImage image(kModeRgb8, 1, 0, IntRect{0, 0, 2000, 3});
    ImageBuffer lying = image.buffer;
    lying.width = 1999;
    EXPECT_EQ(PrepareAnalysisImage(lying, cancel, &out), kParamErr);
    for (int64_t failing = 1;; ++failing) {
        FailAllocation(failing, false);
        const HostResult result = PrepareAnalysisImage(image.buffer, cancel, &out);
        if (result == kNoError) {
            EXPECT_GE(failing, 3);
            break;
        }
        EXPECT_EQ(result, kParamErr);
        EXPECT_EQ(out.maxBrightness, 77u);
        EXPECT_EQ(BufferBytesInUse(), image.buffer.pixelBytes);
    }
    FailAllocation(0, false);
    FreeAnalysisImage(&out);
    out = untouched;
    cancel = 1;
    EXPECT_EQ(PrepareAnalysisImage(image.buffer, cancel, &out), kUserCanceledErr);
    EXPECT_EQ(out.maxBrightness, 77u);
    const TestImage small = MakeGrayRgb(4, 4, [](int, int) { return 1; });
    EXPECT_EQ(PrepareAnalysisImage(small.buffer, cancel, &out), kNoError) << "there is no reduction to stop";
    FreeAnalysisImage(&out);
}

} // namespace
