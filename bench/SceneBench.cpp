// Detection and final render on generated night scenes, beside a plain copy of the same image in the same
// run.
//
//   scene_bench [--megapixels 6,24,100] [--lights 50,500]
//
// Prints one line a case: seconds for the copy, for finding the lights and for rendering, the ratio of the
// two together to the copy, and the peak of the counted memory (the source image included).
#include "bench/Timing.h"
#include "engine/FixedPoint.h"
#include "engine/Geometry.h"
#include "engine/ImageBuffer.h"
#include "engine/LightSourceTable.h"
#include "engine/SerialBuild.h"
#include "render/AngleTables.h"
#include "render/RenderDriver.h"
#include "tests/support/NightScene.h"
#include "tests/support/RecordingDiag.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int32_t kTileSize = 2048; // as in the final render
constexpr RenderSettings kDefaults = {100.0, 50, 50, 50, 150, 6,     50,
                                      30,    50, 50, 15, 30,  false, kStandardStar};

struct BenchCase {
    int32_t width, height, lights;
};

struct BenchResult {
    double copy, find, render;
    uint32_t found;
    int64_t peakBytes;
};

std::vector<int32_t> ParseNumbers(const char *text) {
    std::vector<int32_t> numbers;
    for (char *rest = const_cast<char *>(text); *rest; rest += *rest == ',')
        numbers.push_back(static_cast<int32_t>(strtol(rest, &rest, 10)));
    return numbers;
}

[[noreturn]] void Fail(const char *what) {
    fprintf(stderr, "scene_bench: %s\n", what);
    exit(1);
}

ImageBuffer NewImage(const IntRect &bounds) {
    ImageBuffer image{};
    bool maskFailed = false;
    if (AllocateImageBuffer(kModeRgb8, 1, 0, bounds, false, &image, &maskFailed) != kNoError)
        Fail("no memory for an image");
    return image;
}

// Calls work(tile) for each tile of the area, as the final render does.
template <typename Work> void ForEachTile(const IntRect &area, Work work) {
    for (int32_t top = area.top; top < area.bottom; top += kTileSize)
        for (int32_t left = area.left; left < area.right; left += kTileSize)
            work(IntersectRects(area, {left, top, left + kTileSize, top + kTileSize}));
}

// The yardstick: every tile copied out of the image, and nothing else.
double TimeCopy(const ImageBuffer &image) {
    const Stopwatch watch;
    ForEachTile(image.bounds, [&](const IntRect &tile) {
        ImageBuffer output = NewImage(tile);
        for (int32_t plane = 0; plane < image.colorPlanes; ++plane)
            for (int32_t y = 0; y < output.height; ++y)
                memcpy(output.planes[plane] + int64_t{y} * output.width,
                       image.planes[plane] + int64_t{tile.top + y} * image.width + tile.left,
                       static_cast<size_t>(output.width));
        FreeImageBuffer(&output);
    });
    return watch.Seconds();
}

double TimeRender(const ImageBuffer &image) {
    static const std::atomic<uint8_t> abort{0};
    gPreciseMode = true;
    gFloor = kFloor8Bit;
    const Stopwatch watch;
    ForEachTile(image.bounds, [&](const IntRect &tile) {
        ImageBuffer output = NewImage(tile);
        if (!RenderEffect(kDefaults, image, tile, GetLightSourceTable(), abort, &output))
            Fail("a render failed");
        FreeImageBuffer(&output);
    });
    return watch.Seconds();
}

BenchResult RunCase(const BenchCase &which) {
    static const std::atomic<uint8_t> cancel{0};
    ResetPeakBufferBytes();
    ImageBuffer image = NewImage({0, 0, which.width, which.height});
    PaintNightScene(MakeSceneLights(which.width, which.height, which.lights, 7), 0.02, 7, &image);
    SetImageGeometry(image.bounds);
    ResetRenderState();

    BenchResult result{};
    result.copy = TimeCopy(image);
    const Stopwatch watch;
    if (BuildLightSourceTable(image, 1, cancel) != kNoError)
        Fail("the light sources could not be found");
    result.find = watch.Seconds();
    result.found = GetLightSourceTable().count;
    result.render = TimeRender(image);
    result.peakBytes = PeakBufferBytes();
    FreeRenderState();
    FreeTableRecords(gLightSourceTable);
    FreeImageBuffer(&image);
    return result;
}

void PrintResult(double megapixels, const BenchCase &which, const BenchResult &r) {
    printf("%6.1f %7d %6u %8.3f %8.3f %8.3f %9.1f %8.0f\n", megapixels, which.lights, r.found,
           r.copy, r.find, r.render, (r.find + r.render) / r.copy, static_cast<double>(r.peakBytes) / 1e6);
    fflush(stdout);
}

} // namespace

int main(int argc, char **argv) {
    std::vector<int32_t> megapixels = {6, 24, 100}, lights = {50, 500};
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string option = argv[i];
        if (option == "--megapixels")
            megapixels = ParseNumbers(argv[i + 1]);
        else if (option == "--lights")
            lights = ParseNumbers(argv[i + 1]);
        else
            Fail("usage: scene_bench [--megapixels 6,24,100] [--lights 50,500]");
    }
    BuildAngleTables();
    printf("  MPix  lights  found   copy s   find s render s  of copies  peak MB\n");
    for (const int32_t size : megapixels)
        for (const int32_t count : lights) {
            const int32_t width = static_cast<int32_t>(std::sqrt(size * 1e6 * 1.5));
            const BenchCase which{width, width * 2 / 3, count};
            PrintResult(size, which, RunCase(which));
        }
    return 0;
}
