// Synthetic pictures for the engine's tests.
#pragma once

#include "engine/detect/Detection.h"
#include "engine/detect/WorkerContext.h"
#include "engine/table/LightSourceTable.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/TestImage.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>

// An 8-bit RGB picture at the origin, all three channels from valueAt(x, y).
TestImage MakeGrayRgb(int32_t width, int32_t height, const std::function<uint8_t(int, int)> &valueAt);

struct Spot {
    double x, y, sigma; // pixels
    double peak;        // added at the centre, in 8-bit levels
};
// Gaussian spots on an even background.
TestImage MakeSpots(int32_t width, int32_t height, const std::vector<Spot> &spots, uint8_t background);

// Starts and ends each test with an empty global table, no pending failure and no report, and checks that all
// counted memory was given back.
class EngineTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    std::atomic<uint8_t> cancel{0};
    int64_t held = 0; // by the test's own pictures
};

std::vector<LightSource> GlobalSources();
// Builds the table with one worker; the result code must be 0.
std::vector<LightSource> Detect(const ImageBuffer &image, int workers = 1);
bool SameSources(const std::vector<LightSource> &a, const std::vector<LightSource> &b);

// A detection worker over a whole picture, for tests that look at single steps.
struct TestWorker {
    std::atomic<uint8_t> cancel{0};
    DetectionShared shared{};
    WorkerContext context{};
    explicit TestWorker(const ImageBuffer &picture);
    ~TestWorker();
    TestWorker(const TestWorker &) = delete;
    TestWorker &operator=(const TestWorker &) = delete;
};
