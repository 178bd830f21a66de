#include "engine/AnalysisImage.h"

#include "diag/BufferUsage.h"
#include "tests/engine/TestImages.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

namespace {

// An analysis image that frees itself.
struct Prepared {
    AnalysisImage image{};
    HostResult result;
    explicit Prepared(const ImageBuffer &source) {
        const std::atomic<uint8_t> cancel{0};
        result = PrepareAnalysisImage(source, cancel, &image);
    }
    ~Prepared() { FreeAnalysisImage(&image); }
    Prepared(const Prepared &) = delete;
    Prepared &operator=(const Prepared &) = delete;
};

using AnalysisImageTest = EngineTest;

void ExpectRect(const IntRect &rect, int32_t left, int32_t top, int32_t right, int32_t bottom) {
    EXPECT_EQ(rect.left, left);
    EXPECT_EQ(rect.top, top);
    EXPECT_EQ(rect.right, right);
    EXPECT_EQ(rect.bottom, bottom);
}

// The five values of one document pixel, by way of ReadSample.
PixelSample SlowSample(const ImageBuffer &b, int32_t x, int32_t y) {
    const int64_t i = int64_t{y - b.bounds.top} * b.width + (x - b.bounds.left);
    PixelSample p;
    p.red = ReadSample(b, b.planes[0], i);
    p.green = b.colorPlanes == 3 ? ReadSample(b, b.planes[1], i) : p.red;
    p.blue = b.colorPlanes == 3 ? ReadSample(b, b.planes[2], i) : p.red;
    const uint32_t w = b.transparencyPlanes ? ReadSample(b, b.planes[b.colorPlanes], i) : 0;
    p.coverage = b.transparencyPlanes ? w << 8 | w >> 16 : 0xFFFFFFFFu;
    p.selectionLevel = b.mask ? b.mask[i] * 0x01010101u : 0xFFFFFFFFu;
    return p;
}

// Area average straight from the definition, one analysis pixel at a time.
PixelSample SlowAverage(const ImageBuffer &b, double scale, int32_t ax, int32_t ay) {
    const auto clip = [scale](int32_t a, int32_t low, int32_t high, double *begin, double *end) {
        const double center = std::trunc(a * scale + 0.5) + 0.5;
        *begin = std::max<double>(center - scale / 2, low);
        *end = std::min<double>(center + scale / 2, high);
    };
    double x0, x1, y0, y1, sums[5] = {}, weights = 0;
    clip(ax, b.bounds.left, b.bounds.right, &x0, &x1);
    clip(ay, b.bounds.top, b.bounds.bottom, &y0, &y1);
    for (int32_t y = b.bounds.top; y < b.bounds.bottom; ++y)
        for (int32_t x = b.bounds.left; x < b.bounds.right; ++x) {
            const double wx = std::min<double>(x1, x + 1.0) - std::max<double>(x0, x);
            const double wy = std::min<double>(y1, y + 1.0) - std::max<double>(y0, y);
            if (wx <= 0 || wy <= 0)
                continue;
            const PixelSample p = SlowSample(b, x, y);
            const uint32_t values[5] = {p.red, p.green, p.blue, p.coverage, p.selectionLevel};
            for (int i = 0; i < 5; ++i)
                sums[i] += wx * wy * values[i];
            weights += wx * wy;
        }
    uint32_t out[5];
    for (int i = 0; i < 5; ++i)
        out[i] = static_cast<uint32_t>(std::min(sums[i] / weights + 0.5, 4294967295.0));
    return PixelSample{out[0], out[1], out[2], out[3], out[4]};
}

bool Same(const PixelSample &a, const PixelSample &b) {
    return memcmp(&a, &b, sizeof a) == 0;
}

void FillWithNoise(ImageBuffer *b, uint32_t seed) {
    std::mt19937 random(seed);
    for (int64_t i = 0; i < b->pixelBytes / b->bytesPerSample; ++i) {
        const auto sample16 = static_cast<uint16_t>(random() % 33000);
        const float sample32 = static_cast<float>(random()) / 4e9f;
        if (b->bytesPerSample == 1)
            b->pixels[i] = static_cast<uint8_t>(random());
        else if (b->bytesPerSample == 2)
            memcpy(b->pixels + 2 * i, &sample16, 2);
        else
            memcpy(b->pixels + 4 * i, &sample32, 4);
    }
    for (int64_t i = 0; i < b->maskBytes; ++i)
        b->mask[i] = static_cast<uint8_t>(random());
}

TEST_F(AnalysisImageTest, UpToTwelveHundredPixelsThePictureIsCopiedAsItIs) {
    for (const bool gray : {false, true}) {
        TestImage image(gray ? kModeGray8 : kModeRgb8, 1, 1, IntRect{-20, 7, 1180, 12}, true);
        FillWithNoise(&image.buffer, 3);
        const Prepared prepared(image.buffer);
        ASSERT_EQ(prepared.result, kNoError);
        EXPECT_EQ(prepared.image.scale, 1.0);
        ExpectRect(prepared.image.bounds, -20, 7, 1180, 12);
        uint32_t largest = 0;
        for (int32_t y = 7; y < 12; ++y)
            for (int32_t x = -20; x < 1180; ++x) {
                const PixelSample expected = SlowSample(image.buffer, x, y);
                ASSERT_TRUE(Same(FetchPixel(prepared.image, x, y), expected)) << x << ',' << y;
                largest = std::max(largest, PixelBrightness(expected));
            }
        EXPECT_EQ(prepared.image.maxBrightness, largest);
    }
}

TEST_F(AnalysisImageTest, BoundsOfAReductionFollowTheScaleRule) {
    struct Case {
        IntRect bounds, expected;
    };
    const Case cases[] = {{{0, 0, 1201, 10}, {0, 0, 1200, 10}},
                          {{0, 0, 2400, 1600}, {0, 0, 1200, 800}},
                          {{100, 50, 2500, 51}, {50, 25, 1250, 26}},
                          {{0, 0, 3, 32767}, {0, 0, 1, 1200}},
                          {{33, 0, 33 + 6000, 4001}, {6, 0, 1207, 801}}};
    for (const Case &c : cases) {
        TestImage image(kModeGray8, 1, 0, c.bounds, false);
        const Prepared prepared(image.buffer);
        ASSERT_EQ(prepared.result, kNoError);
        const int32_t longer = std::max(image.buffer.width, image.buffer.height);
        EXPECT_EQ(prepared.image.scale, longer * 0.0008333333333333334);
        const IntRect &e = c.expected;
        ExpectRect(prepared.image.bounds, e.left, e.top, e.right, e.bottom);
    }
}

TEST_F(AnalysisImageTest, ReductionEqualsItsSlowTwin) {
    const IntRect bounds[] = {{0, 0, 1201, 9}, {0, 0, 11, 1600}, {0, 0, 3001, 13}, {20, 31, 2049, 44}};
    const int32_t modes[] = {kModeRgb8, kModeGray16, kModeRgb32, kModeRgb16};
    const int32_t bytes[] = {1, 2, 4, 2};
    for (int i = 0; i < 4; ++i) {
        TestImage image(modes[i], bytes[i], i % 2, bounds[i], i != 1);
        FillWithNoise(&image.buffer, static_cast<uint32_t>(i));
        const Prepared prepared(image.buffer);
        ASSERT_EQ(prepared.result, kNoError);
        const IntRect &reduced = prepared.image.bounds;
        for (int32_t y = reduced.top; y < reduced.bottom; y += i == 1 ? 71 : 1)
            for (int32_t x = reduced.left; x < reduced.right; x += i == 1 ? 1 : 71)
                ASSERT_TRUE(Same(FetchPixel(prepared.image, x, y),
                                 SlowAverage(image.buffer, prepared.image.scale, x, y)))
                    << "picture " << i << " at " << x << ',' << y;
    }
}

TEST_F(AnalysisImageTest, AWindowWithNoPixelTakesTheLastColumn) {
    // The first analysis column of this picture points four document pixels left of it.
    TestImage image(kModeGray8, 1, 0, IntRect{1003, 0, 1003 + 3960, 1}, false);
    SetSample8(&image.buffer, 0, 3959, 0, 200);
    const Prepared prepared(image.buffer);
    ASSERT_EQ(prepared.result, kNoError);
    ASSERT_EQ(prepared.image.bounds.left, 303);
    EXPECT_EQ(FetchPixel(prepared.image, 303, 0).red, WorkingFrom8(200));
}

TEST_F(AnalysisImageTest, FullAndEmptyValuesSurviveAReduction) {
    TestImage image(kModeRgb32, 4, 1, IntRect{0, 0, 3001, 50}, true);
    for (int64_t i = 0; i < image.buffer.planeSize * 4; ++i) {
        const float one = 1.0f;
        memcpy(image.buffer.pixels + 4 * i, &one, 4);
    }
    memset(image.buffer.mask, 255, static_cast<size_t>(image.buffer.maskBytes));
    const Prepared full(image.buffer);
    EXPECT_EQ(full.image.maxBrightness, 16777215u);
    const size_t pixels = full.image.sampleBytes / sizeof(PixelSample);
    for (size_t i = 0; i < pixels; ++i)
        ASSERT_TRUE(
            Same(full.image.samples[i], PixelSample{16777215, 16777215, 16777215, 0xFFFFFFFF, 0xFFFFFFFF}));
    memset(image.buffer.pixels, 0, static_cast<size_t>(image.buffer.pixelBytes));
    memset(image.buffer.mask, 0, static_cast<size_t>(image.buffer.maskBytes));
    const Prepared empty(image.buffer);
    EXPECT_EQ(empty.image.maxBrightness, 0u);
    for (size_t i = 0; i < pixels; ++i)
        ASSERT_TRUE(Same(empty.image.samples[i], PixelSample{0, 0, 0, 0, 0}));
}

TEST_F(AnalysisImageTest, ReadingOutsideTheBoundsGivesZero) {
    const TestImage image = MakeGrayRgb(3, 2, [](int, int) { return 255; });
    const Prepared prepared(image.buffer);
    const PixelSample zero{0, 0, 0, 0, 0};
    for (const auto &[x, y] : {std::pair{-1, 0}, {3, 0}, {0, -1}, {0, 2}, {INT32_MIN, INT32_MAX}})
        EXPECT_TRUE(Same(FetchPixel(prepared.image, x, y), zero));
    EXPECT_TRUE(IsPixelSelected(FetchPixel(prepared.image, 2, 1)));
}

TEST_F(AnalysisImageTest, SelectionNeedsHalfTheMaskAndSomeCoverage) {
    TestImage image(kModeRgb8, 1, 1, IntRect{0, 0, 4, 1}, true);
    const uint8_t masks[] = {127, 128, 255, 255}, coverages[] = {255, 255, 0, 1};
    for (int32_t x = 0; x < 4; ++x) {
        SetSample8(&image.buffer, 3, x, 0, coverages[x]);
        image.buffer.mask[x] = masks[x];
    }
    const Prepared prepared(image.buffer);
    const bool expected[] = {false, true, false, true};
    for (int32_t x = 0; x < 4; ++x)
        EXPECT_EQ(IsPixelSelected(FetchPixel(prepared.image, x, 0)), expected[x]) << x;
}

TEST_F(AnalysisImageTest, MarkingChangesTheCopyOnlyAndNothingOutside) {
    TestImage image = MakeGrayRgb(3, 3, [](int, int) { return 9; });
    Prepared prepared(image.buffer);
    MarkPixel(&prepared.image, 1, 1);
    MarkPixel(&prepared.image, 3, 1);
    MarkPixel(&prepared.image, -1, 1);
    EXPECT_TRUE(Same(FetchPixel(prepared.image, 1, 1),
                     PixelSample{0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0}));
    EXPECT_EQ(FetchPixel(prepared.image, 0, 2).red, WorkingFrom8(9));
    EXPECT_EQ(FetchPixel(prepared.image, 2, 1).red, WorkingFrom8(9));
    EXPECT_EQ(image.buffer.planes[0][4], 9);
}

TEST_F(AnalysisImageTest, FailuresLeaveTheOutputAlone) {
    AnalysisImage untouched{};
    untouched.maxBrightness = 77;
    AnalysisImage out = untouched;
    const ImageBuffer nothing{};
    EXPECT_EQ(PrepareAnalysisImage(nothing, cancel, &out), kParamErr);
    TestImage image(kModeRgb8, 1, 0, IntRect{0, 0, 2000, 3}, false);
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
    EXPECT_EQ(PrepareAnalysisImage(small.buffer, cancel, &out),
              kNoError); // nothing to stop: there is no reduction
    FreeAnalysisImage(&out);
}

} // namespace
