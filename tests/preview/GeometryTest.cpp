#include "ui/pixels/PreviewGeometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace {

constexpr double kZooms[] = {0.3,  0.5,   1.0,   2.5,   6.25,  12.5,  16.67, 25.0,   33.33, 50.0,  66.67,
                             80.0, 99.99, 100.0, 123.4, 200.0, 250.0, 300.0, 437.21, 800.0, 1600.0};

bool Same(const IntRect &a, const IntRect &b) {
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

// Whether pixel s of the scaled axis and pixel d of the document have more than a rounding error in common.
bool Touch(int32_t s, int32_t d, double zoom) {
    const double low = d * zoom / 100.0, high = (d + 1) * zoom / 100.0;
    return std::min(high, s + 1.0) - std::max(low, double(s)) > 1e-7;
}

} // namespace

TEST(PreviewGeometry, ScaledRectangleIsEveryPixelThatIsTouched) {
    for (const double zoom : kZooms)
        for (int32_t left = 0; left < 24; ++left)
            for (int32_t right = left + 1; right < 27; right += 3) {
                const IntRect scaled = ScaleRect({left, left, right, right}, zoom);
                const auto end = static_cast<int32_t>(right * zoom / 100.0) + 3;
                for (int32_t s = 0; s < end; ++s) {
                    bool isTouched = false;
                    for (int32_t d = left; d < right; ++d)
                        isTouched = isTouched || Touch(s, d, zoom);
                    ASSERT_EQ(s >= scaled.left && s < scaled.right, isTouched)
                        << zoom << " " << left << "-" << right << " at " << s;
                }
                EXPECT_EQ(scaled.left, scaled.top);
                EXPECT_EQ(scaled.right, scaled.bottom);
            }
    EXPECT_TRUE(Same(ScaleRect({10, 0, 11, 1}, 250.0), {25, 0, 28, 3})); // columns 25 to 27
    EXPECT_TRUE(Same(ScaleRect({-7, -3, 11, 5}, 100.0), {-7, -3, 11, 5}));
    const PreviewGeometry view = {{0, 0, 1000, 800}, {1, 1, 101, 61}, 500, 400, 100.0};
    EXPECT_TRUE(Same(WindowAroundView(view, 0.5), {400, 340, 600, 460}));
}

TEST(PreviewGeometry, UnscaledRectangleIsEveryPixelUnderIt) {
    std::mt19937 random(4711);
    for (int i = 0; i < 20000; ++i) {
        const double zoom = kZooms[random() % std::size(kZooms)];
        const auto left = static_cast<int32_t>(random() % 60000),
                   top = static_cast<int32_t>(random() % 60000);
        const IntRect scaled{left, top, left + 1 + static_cast<int32_t>(random() % 3000),
                             top + 1 + static_cast<int32_t>(random() % 3000)};
        const IntRect document = UnscaleRect(scaled, zoom), back = ScaleRect(document, zoom);
        ASSERT_TRUE(back.left <= scaled.left && back.top <= scaled.top && back.right >= scaled.right &&
                    back.bottom >= scaled.bottom)
            << zoom;
        ASSERT_TRUE(Touch(scaled.left, document.left, zoom) && !Touch(scaled.left, document.left - 1, zoom));
        ASSERT_TRUE(Touch(scaled.right - 1, document.right - 1, zoom) &&
                    !Touch(scaled.right - 1, document.right, zoom));
    }
}
