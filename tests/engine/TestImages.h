// Synthetic pictures for the engine's tests.
#pragma once

#include "engine/image/ImageBuffer.h"
#include "engine/table/LightSourceTable.h"
#include "tests/support/RecordingDiag.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <vector>

// A picture that frees itself.
struct TestImage {
    ImageBuffer buffer{};
    TestImage(int32_t mode, int32_t bytesPerSample, int32_t transparencyPlanes, const IntRect &bounds,
              bool wantMask);
    ~TestImage() { FreeImageBuffer(&buffer); }
    TestImage(TestImage &&other) noexcept : buffer(other.buffer) { other.buffer = ImageBuffer{}; }
    TestImage(const TestImage &) = delete;
    TestImage &operator=(const TestImage &) = delete;
};

// An 8-bit RGB picture at the origin, all three channels from valueAt(x, y).
TestImage MakeGrayRgb(int32_t width, int32_t height, const std::function<uint8_t(int, int)> &valueAt);

void SetSample8(ImageBuffer *buffer, int plane, int32_t x, int32_t y, uint8_t value);

struct Spot {
    double x, y, sigma; // pixels
    double peak;        // added at the centre, in 8-bit levels
};
// Gaussian spots on an even background.
TestImage MakeSpots(int32_t width, int32_t height, const std::vector<Spot> &spots, uint8_t background);

// Noise of 0..255 in every sample.
TestImage MakeNoise(int32_t width, int32_t height, uint32_t seed);

// Starts and ends each test with an empty global table, no pending failure and no report, and checks that all
// counted memory was given back.
class EngineTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    std::atomic<uint8_t> cancel{0};
};

std::vector<LightSource> GlobalSources();
// Builds the table with one worker; the result code must be 0.
std::vector<LightSource> Detect(const ImageBuffer &image, int workers = 1);
bool SameSources(const std::vector<LightSource> &a, const std::vector<LightSource> &b);
