// Common ground of the render suites: known process-wide state before each test, nothing held after it.
#pragma once

#include "diag/BufferUsage.h"
#include "engine/image/FixedPoint.h"
#include "engine/image/Geometry.h"
#include "engine/image/ImageBuffer.h"
#include "render/RenderDriver.h"
#include "render/RenderState.h"
#include "render/rows/RenderPath.h"
#include "render/shape/AngleTables.h"
#include "render/shape/FixedPower.h"
#include "tests/support/RecordingDiag.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

constexpr int32_t kAllModes[] = {kModeGray8, kModeRgb8, kModeGray16, kModeRgb16, kModeGray32, kModeRgb32};

inline int32_t BytesOfMode(int32_t mode) {
    if (mode == kModeGray16 || mode == kModeRgb16)
        return 2;
    return mode == kModeGray32 || mode == kModeRgb32 ? 4 : 1;
}

inline RenderSettings DefaultSettings() {
    RenderSettings s{};
    s.scale = 100.0;
    s.threshold = 50;
    s.intensity = 50;
    s.length = 50;
    s.angle = 150;
    s.numberOfPoints = 6;
    s.spikeSharpness = 50;
    s.colorSaturation = 30;
    s.rainbowIntensity = 50;
    s.rainbowFrequency = 50;
    s.secondaryIntensity = 15;
    s.softFlareIntensity = 30;
    s.effectType = kStandardStar;
    return s;
}

// An image buffer that frees itself.
struct TestImage {
    ImageBuffer buffer{};
    TestImage(int32_t mode, int32_t transparencyPlanes, const IntRect &bounds) {
        bool maskFailed = false;
        EXPECT_EQ(AllocateImageBuffer(mode, BytesOfMode(mode), transparencyPlanes, bounds, false, &buffer,
                                      &maskFailed),
                  kNoError);
    }
    ~TestImage() { FreeImageBuffer(&buffer); }
    TestImage(const TestImage &) = delete;
    TestImage &operator=(const TestImage &) = delete;

    int64_t Index(int32_t x, int32_t y) const {
        return int64_t{y - buffer.bounds.top} * buffer.width + (x - buffer.bounds.left);
    }
    template <typename Sample> Sample &At(int32_t plane, int32_t x, int32_t y) {
        return reinterpret_cast<Sample *>(buffer.planes[plane])[Index(x, y)];
    }
    std::vector<uint8_t> Bytes() const { return {buffer.pixels, buffer.pixels + buffer.pixelBytes}; }
};

// Random samples: any byte, 16-bit ones up to 40000, floats with a few odd ones among them.
inline void FillRandom(TestImage *image, uint32_t seed) {
    std::mt19937 random(seed);
    const int64_t samples = image->buffer.planeSize * PlaneCount(image->buffer);
    const float odd[] = {-0.5f,
                         1.0f,
                         3.25f,
                         std::numeric_limits<float>::quiet_NaN(),
                         std::numeric_limits<float>::infinity(),
                         -std::numeric_limits<float>::infinity()};
    for (int64_t i = 0; i < samples; ++i) {
        const uint32_t r = random();
        if (image->buffer.bytesPerSample == 1)
            image->buffer.pixels[i] = static_cast<uint8_t>(r);
        else if (image->buffer.bytesPerSample == 2)
            reinterpret_cast<uint16_t *>(image->buffer.pixels)[i] = static_cast<uint16_t>(r % 40000);
        else
            reinterpret_cast<float *>(image->buffer.pixels)[i] =
                r % 16 == 0 ? odd[r / 16 % 6] : static_cast<float>(r % 10000) / 10000.0f;
    }
}

// A bright source in the middle of its pixel's first quarter.
inline LightSource MakeSource(int32_t x, int32_t y, int32_t xQuarter = 0, int32_t yQuarter = 0) {
    return LightSource{x,          xQuarter,    y,           yQuarter,     4,  0xF0000000u, 0xFFFFFFFEu,
                       0xE0000000, 0xC0000000u, 0xFFFFFFFEu, /* Aux */ -1, 1u, 1u};
}

inline LightSourceTableView ViewOf(std::vector<LightSource> &sources) {
    return {sources.data(), static_cast<uint32_t>(sources.size())};
}

inline bool Render(const RenderSettings &settings, const TestImage &source, std::vector<LightSource> &lights,
                   TestImage *output) {
    const std::atomic<uint8_t> never{0};
    return RenderEffect(settings, source.buffer, output->buffer.bounds, ViewOf(lights), never,
                        &output->buffer);
}

class RenderTest : public testing::Test {
protected:
    void SetUp() override {
        gPreciseMode = true;
        gFloor = kFloor8Bit;
        SetImageGeometry({0, 0, 200, 160});
        BuildAngleTables();
        PrepareCoveragePower();
        ResetRenderState();
        FailAllocation(0, false);
        TakeReports();
    }
    void TearDown() override {
        FailAllocation(0, false);
        FreeRenderState();
        gRenderState.stars.build = starBuilder;
        gRenderState.flares.build = flareBuilder;
        gRenderPath = path;
        EXPECT_EQ(BufferBytesInUse(), 0);
    }
    bool (*const starBuilder)(StarStamp *, int32_t, int32_t) = gRenderState.stars.build;
    bool (*const flareBuilder)(FlareStamp *, int32_t, int32_t) = gRenderState.flares.build;
    const RenderPath *const path = gRenderPath;
    const std::atomic<uint8_t> noAbort{0};
};
