// Common ground of the render suites: known process-wide state before each test, nothing held after it.
#pragma once

#include "diag/BufferUsage.h"
#include "engine/image/FixedPoint.h"
#include "engine/image/Geometry.h"
#include "render/RenderDriver.h"
#include "render/RenderState.h"
#include "render/rows/RenderPath.h"
#include "render/shape/AngleTables.h"
#include "render/shape/FixedPower.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/TestImage.h"

#include <gtest/gtest.h>

constexpr RenderSettings kSettings = {100.0, 50, 50, 50, 150, 6,     50,
                                      30,    50, 50, 15, 30,  false, kStandardStar};

// A bright source in the middle of its pixel's first quarter.
inline LightSource MakeSource(int32_t x, int32_t y, int32_t xQuarter = 0, int32_t yQuarter = 0) {
    return LightSource{x,          xQuarter,    y,           yQuarter,     4,  0xF0000000u, 0xFFFFFFFEu,
                       0xE0000000, 0xC0000000u, 0xFFFFFFFEu, /* Aux */ -1, 1u, 1u};
}

inline bool Render(const RenderSettings &settings, const TestImage &source, std::vector<LightSource> sources,
                   TestImage *output, const std::atomic<uint8_t> &abort = std::atomic<uint8_t>{0},
                   const WorkerThreads &threads = {1, nullptr, nullptr}) {
    return RenderEffect(settings, source.buffer, output->buffer.bounds,
                        {sources.data(), static_cast<uint32_t>(sources.size())}, abort, &output->buffer,
                        threads);
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
        held = BufferBytesInUse();
    }
    void TearDown() override {
        FailAllocation(0, false);
        FreeRenderState();
        gStampBuilders.star = starBuilder;
        gStampBuilders.flare = flareBuilder;
        gRenderPath = path;
        EXPECT_EQ(BufferBytesInUse(), held);
    }
    bool (*const starBuilder)(StarStamp *, int32_t, int32_t) = gStampBuilders.star;
    bool (*const flareBuilder)(FlareStamp *, int32_t, int32_t) = gStampBuilders.flare;
    const RenderPath *const path = gRenderPath;
    int64_t held = 0; // by the test's own pictures
};
