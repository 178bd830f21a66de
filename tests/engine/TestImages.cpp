#include "tests/engine/TestImages.h"

#include "diag/BufferUsage.h"
#include "engine/SerialBuild.h"
#include "engine/image/AnalysisImage.h"

#include <algorithm>
#include <cmath>

TestImage MakeGrayRgb(int32_t width, int32_t height, const std::function<uint8_t(int, int)> &valueAt) {
    TestImage image(kModeRgb8, 1, 0, IntRect{0, 0, width, height});
    for (int32_t i = 0; i < width * height; ++i)
        image.buffer.planes[0][i] = image.buffer.planes[1][i] = image.buffer.planes[2][i] =
            valueAt(i % width, i / width);
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

void EngineTest::SetUp() {
    FailAllocation(0, false);
    TakeReports();
    FreeTableRecords(gLightSourceTable);
    held = BufferBytesInUse();
}

void EngineTest::TearDown() {
    FailAllocation(0, false);
    FreeTableRecords(gLightSourceTable);
    EXPECT_EQ(BufferBytesInUse(), held);
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

TestWorker::TestWorker(const ImageBuffer &picture) {
    shared.cancel = &cancel;
    EXPECT_EQ(PrepareAnalysisImage(picture, cancel, &shared.image), kNoError);
    EXPECT_EQ(InitializeWorkerContext(0, shared.image.bounds, &shared, &context), kNoError);
}

TestWorker::~TestWorker() {
    ReleaseWorkerContext(&context);
    FreeAnalysisImage(&shared.image);
}
