#include "ui/pixels/PreviewDrawing.h"
#include "ui/pixels/PreviewFilling.h"
#include "ui/pixels/PreviewStore.h"

#include "diag/BufferUsage.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/TestImage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

const std::atomic<uint8_t> kGoOn{0};

struct NoiseImage : TestImage {
    NoiseImage(int32_t mode, int32_t bytes, const IntRect &bounds, uint32_t seed)
        : TestImage(mode, bytes, 0, bounds) {
        FillRandom(seed);
    }
    // 0..1 of the channel of a pixel.
    double Value(int32_t channel, int32_t x, int32_t y) const {
        const int64_t index = int64_t{y - buffer.bounds.top} * buffer.width + (x - buffer.bounds.left);
        return ReadSample(buffer, buffer.planes[buffer.colorPlanes == 1 ? 0 : channel], index) / 16777215.0;
    }
    // The true mean over a rectangle of real numbers, within the image.
    double Mean(int32_t channel, double left, double top, double right, double bottom) const {
        const IntRect &b = buffer.bounds;
        left = std::max<double>(left, b.left), top = std::max<double>(top, b.top);
        right = std::min<double>(right, b.right), bottom = std::min<double>(bottom, b.bottom);
        double sum = 0, weight = 0;
        for (auto y = static_cast<int32_t>(std::floor(top)); y < bottom; ++y)
            for (auto x = static_cast<int32_t>(std::floor(left)); x < right; ++x) {
                const double share = (std::min(right, x + 1.0) - std::max<double>(left, x)) *
                                     (std::min(bottom, y + 1.0) - std::max<double>(top, y));
                sum += Value(channel, x, y) * share;
                weight += share;
            }
        return sum / weight;
    }
};

struct TestStore {
    PixelStore store{};
    TestStore(const IntRect &bounds, double scale) { EXPECT_TRUE(AllocateStore(bounds, scale, &store)); }
    ~TestStore() { FreeStore(&store); }
    TestStore(const TestStore &) = delete;
    TestStore &operator=(const TestStore &) = delete;

    uint32_t At(int32_t x, int32_t y) const {
        return store.pixels[(y - store.bounds.top) * (store.bounds.right - store.bounds.left) +
                            (x - store.bounds.left)];
    }
};

int32_t Channel(uint32_t pixel, int32_t channel) {
    return static_cast<int32_t>(pixel >> (16 - 8 * channel) & 0xFF);
}

struct Form {
    int32_t mode, bytes;
};
constexpr Form kForms[] = {
    {kModeRgb8, 1}, {kModeGray8, 1}, {kModeRgb16, 2}, {kModeGray16, 2}, {kModeRgb32, 4}};

} // namespace

TEST(PreviewStore, FullSizePixelsAreTheImagesOwn) {
    for (const Form &form : kForms) {
        const NoiseImage image(form.mode, form.bytes, {3, 5, 70, 48}, 11);
        TestStore part({10, 2, 40, 60}, 100.0); // reaches out of the image above and below
        ASSERT_TRUE(FillStore(image.buffer, kGoOn, &part.store));
        for (int32_t y = 2; y < 60; ++y)
            for (int32_t x = 10; x < 40; ++x) {
                const bool isInside = y >= 5 && y < 48;
                ASSERT_EQ(part.At(x, y) >> 24, isInside ? 255u : 0u);
                for (int32_t c = 0; isInside && c < 3; ++c)
                    ASSERT_EQ(Channel(part.At(x, y), c),
                              static_cast<int32_t>(image.Value(c, x, y) * 255.0 + 0.5));
            }
    }
}

TEST(PreviewStore, ReducedPixelsAreMeansOfWhatTheyCover) {
    double worst = 0;
    for (const Form &form : kForms)
        for (const double zoom : {66.67, 50.0, 33.33, 16.67, 6.25, 2.5}) {
            const NoiseImage image(form.mode, form.bytes, {7, 3, 160, 131}, 23);
            const double step = 100.0 / zoom;
            const auto end = static_cast<int32_t>(160 * zoom / 100.0) + 3;
            TestStore reduced({0, 0, end, end}, zoom);
            ASSERT_TRUE(FillStore(image.buffer, kGoOn, &reduced.store));
            for (int32_t y = 0; y < end; ++y)
                for (int32_t x = 0; x < end; ++x) {
                    const bool isInside = (x + 1) * step > 7 + 1e-6 && x * step < 160 - 1e-6 &&
                                          (y + 1) * step > 3 + 1e-6 && y * step < 131 - 1e-6;
                    ASSERT_EQ(reduced.At(x, y) != 0, isInside) << zoom << " at " << x << "," << y;
                    for (int32_t c = 0; isInside && c < 3; ++c)
                        worst =
                            std::max(worst, std::fabs(Channel(reduced.At(x, y), c) -
                                                      255.0 * image.Mean(c, x * step, y * step,
                                                                         (x + 1) * step, (y + 1) * step)));
                }
        }
    std::printf("worst error of a mean: %.3f levels\n", worst);
    EXPECT_LT(worst, 1.5); // half a level of rounding, and shares of slivers at the edges in 1/256
}

TEST(PreviewStore, EnlargesInWholePixels) {
    const NoiseImage image(kModeRgb8, 1, {0, 0, 40, 30}, 9);
    TestStore full({4, 4, 30, 25}, 100.0);
    ASSERT_TRUE(FillStore(image.buffer, kGoOn, &full.store));
    for (const int32_t factor : {1, 2, 3, 16}) {
        const IntRect part{5 * factor + 1, 6 * factor, 20 * factor, 18 * factor - 1};
        const int32_t width = part.right - part.left;
        std::vector<uint32_t> drawn(static_cast<size_t>(width * (part.bottom - part.top)));
        DrawStore(full.store, image.buffer, true, 100.0 * factor, part, drawn.data(), width);
        for (int32_t y = part.top; y < part.bottom; ++y)
            for (int32_t x = part.left; x < part.right; ++x)
                ASSERT_EQ(drawn[static_cast<size_t>((y - part.top) * width + x - part.left)],
                          full.At(x / factor, y / factor))
                    << factor;
    }
}

TEST(PreviewStore, DrawsItsOwnScalePixelByPixelAndTheImageWhereItIsEmpty) {
    const NoiseImage image(kModeRgb8, 1, {0, 0, 600, 400}, 31);
    TestStore store({10, 10, 90, 60}, 16.67), piece({10, 10, 50, 60}, 16.67);
    ASSERT_TRUE(FillStore(image.buffer, kGoOn, &piece.store));
    CopyStore(piece.store, &store.store); // the right half stays empty
    std::vector<uint32_t> drawn(100 * 66);
    DrawStore(store.store, image.buffer, true, 16.67, {0, 0, 100, 66}, drawn.data(), 100);
    for (int32_t y = 0; y < 66; ++y)
        for (int32_t x = 0; x < 100; ++x) {
            const uint32_t pixel = drawn[static_cast<size_t>(y * 100 + x)];
            if (x >= 10 && x < 50 && y >= 10 && y < 60) {
                ASSERT_EQ(pixel, piece.At(x, y));
                continue;
            }
            const auto atX = static_cast<int32_t>((x + 0.5) / 0.1667),
                       atY = static_cast<int32_t>((y + 0.5) / 0.1667);
            for (int32_t c = 0; c < 3; ++c)
                ASSERT_EQ(Channel(pixel, c), static_cast<int32_t>(image.Value(c, atX, atY) * 255.0 + 0.5));
        }
    // No store at all.
    DrawStore(PixelStore{}, image.buffer, true, 16.67, {0, 0, 100, 66}, drawn.data(), 100);
    EXPECT_EQ(std::count(drawn.begin(), drawn.end(), 0u), 0);
}

TEST(PreviewStore, TakesOverWhatAnotherZoomShows) {
    const NoiseImage image(kModeRgb8, 1, {0, 0, 200, 200}, 77);
    TestStore half({0, 0, 100, 100}, 50.0), full({20, 20, 120, 120}, 100.0), back({0, 0, 100, 100}, 50.0);
    ASSERT_TRUE(FillStore(image.buffer, kGoOn, &half.store));
    CopyStore(half.store, &full.store);
    for (int32_t y = 20; y < 120; ++y)
        for (int32_t x = 20; x < 120; ++x)
            ASSERT_EQ(full.At(x, y), half.At(x / 2, y / 2));
    CopyStore(full.store, &back.store);
    EXPECT_EQ(back.At(9, 30), 0u); // the other reaches no further
    EXPECT_EQ(back.At(10, 30), half.At(10, 30));
    const TestStore none({0, 0, 100, 100}, 50.0);
    CopyStore(none.store, &back.store);
    EXPECT_EQ(back.At(10, 30), half.At(10, 30)) << "what has nothing takes nothing away";
}

TEST(PreviewStore, StopsWhenCancelledAndWithoutMemory) {
    const NoiseImage image(kModeRgb8, 1, {0, 0, 64, 64}, 1);
    const std::atomic<uint8_t> cancel{1};
    TestStore full({0, 0, 64, 64}, 100.0), half({0, 0, 32, 32}, 50.0);
    EXPECT_FALSE(FillStore(image.buffer, cancel, &full.store));
    EXPECT_FALSE(FillStore(image.buffer, cancel, &half.store));
    const int64_t held = BufferBytesInUse();
    for (int64_t n = 1; n <= 2; ++n) {
        FailAllocation(n, false);
        EXPECT_FALSE(FillStore(image.buffer, kGoOn, &half.store)) << n;
    }
    FailAllocation(1, false);
    PixelStore none{};
    EXPECT_FALSE(AllocateStore({0, 0, 5, 5}, 100.0, &none));
    FailAllocation(0, false);
    EXPECT_FALSE(AllocateStore({5, 0, 5, 5}, 100.0, &none));
    EXPECT_EQ(none.pixels, nullptr);
    EXPECT_EQ(BufferBytesInUse(), held);
}
