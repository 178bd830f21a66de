#include "tests/engine/TestImages.h"

#include "diag/BufferUsage.h"
#include "engine/SerialBuild.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <stdexcept>

TestImage::TestImage(int32_t mode, int32_t bytesPerSample, int32_t transparencyPlanes, const IntRect &bounds,
                     bool wantMask) {
    bool maskFailed;
    if (AllocateImageBuffer(mode, bytesPerSample, transparencyPlanes, bounds, wantMask, &buffer,
                            &maskFailed) != kNoError)
        throw std::runtime_error("no memory for a test picture");
}

void SetSample8(ImageBuffer *buffer, int plane, int32_t x, int32_t y, uint8_t value) {
    buffer->planes[plane][int64_t{y} * buffer->width + x] = value;
}

TestImage MakeGrayRgb(int32_t width, int32_t height, const std::function<uint8_t(int, int)> &valueAt) {
    TestImage image(kModeRgb8, 1, 0, IntRect{0, 0, width, height}, false);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            const uint8_t value = valueAt(x, y);
            for (int channel = 0; channel < 3; ++channel)
                SetSample8(&image.buffer, channel, x, y, value);
        }
    return image;
}

TestImage MakeSpots(int32_t width, int32_t height, const std::vector<Spot> &spots, uint8_t background) {
    return MakeGrayRgb(width, height, [&](int x, int y) {
        double value = background;
        for (const Spot &s : spots) {
            const double squares = ((x - s.x) * (x - s.x) + (y - s.y) * (y - s.y)) / (2 * s.sigma * s.sigma);
            if (squares < 20) // beyond it nothing is left of a spot
                value += s.peak * std::exp(-squares);
        }
        return static_cast<uint8_t>(std::lround(std::min(value, 255.0)));
    });
}

TestImage MakeNoise(int32_t width, int32_t height, uint32_t seed) {
    std::mt19937 random(seed);
    return MakeGrayRgb(width, height, [&random](int, int) { return static_cast<uint8_t>(random() % 256); });
}

void EngineTest::SetUp() {
    FailAllocation(0, false);
    TakeReports();
    FreeTableRecords(gLightSourceTable);
    ASSERT_EQ(BufferBytesInUse(), 0);
}

void EngineTest::TearDown() {
    FailAllocation(0, false);
    FreeTableRecords(gLightSourceTable);
    EXPECT_EQ(BufferBytesInUse(), 0);
}

std::vector<LightSource> GlobalSources() {
    const LightSourceTableView view = GetLightSourceTable();
    return std::vector<LightSource>(view.records, view.records + view.count);
}

std::vector<LightSource> Detect(const ImageBuffer &image, int workers) {
    const std::atomic<uint8_t> cancel{0};
    EXPECT_EQ(BuildLightSourceTable(image, workers, cancel), kNoError);
    return GlobalSources();
}

bool SameSources(const std::vector<LightSource> &a, const std::vector<LightSource> &b) {
    return a.size() == b.size() &&
           (a.empty() || memcmp(a.data(), b.data(), a.size() * sizeof(LightSource)) == 0);
}
