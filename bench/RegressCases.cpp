// The fixed cases that regress.sh counts instructions of: regress_cases detect|stars|flare. Prints what came
// out, so that a case that does nothing shows.
#include "bench/DetectScenes.h"
#include "engine/SerialBuild.h"
#include "engine/image/FixedPoint.h"
#include "engine/image/Geometry.h"
#include "engine/table/LightSourceTable.h"
#include "render/RenderDriver.h"
#include "render/RenderState.h"
#include "render/shape/AngleTables.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

const std::atomic<uint8_t> kNoCancel{0};

constexpr RenderSettings kStars = {100.0, 50, 50, 50, 150, 6, 50, 30, 50, 50, 15, 30, false, kStandardStar};
constexpr RenderSettings kFlare = {100.0, 50, 80, 40, 0, 12, 70, 0, 30, 50, 0, 100, false, kHollywoodStar};

[[noreturn]] void Fail(const char *what) {
    fprintf(stderr, "regress_cases: %s\n", what);
    exit(1);
}

uint64_t SumOfBytes(const ImageBuffer &image) {
    uint64_t sum = 0;
    for (int64_t i = 0; i < image.pixelBytes; ++i)
        sum += image.pixels[i];
    return sum;
}

void Render(const RenderSettings &settings, const ImageBuffer &image) {
    ImageBuffer output{};
    bool maskFailed = false;
    if (AllocateImageBuffer(kModeRgb8, 1, 0, image.bounds, false, &output, &maskFailed) != kNoError)
        Fail("no memory");
    gPreciseMode = true;
    gFloor = kFloor8Bit;
    SetImageGeometry(image.bounds);
    BuildAngleTables();
    ResetRenderState();
    if (!RenderEffect(settings, image, image.bounds, GetLightSourceTable(), kNoCancel, &output))
        Fail("the render failed");
    printf("sum of bytes %llu\n", static_cast<unsigned long long>(SumOfBytes(output)));
    FreeRenderState();
    FreeImageBuffer(&output);
}

} // namespace

int main(int argc, char **argv) {
    const std::string which = argc == 2 ? argv[1] : "";
    if (which != "detect" && which != "stars" && which != "flare")
        Fail("usage: regress_cases detect|stars|flare");
    ImageBuffer image =
        which == "detect" ? MakeNightPicture(2000, 1000, 300) : MakeNightPicture(800, 500, 20);
    if (!image.pixels || BuildLightSourceTable(image, 1, kNoCancel) != kNoError)
        Fail("the light sources could not be found");
    printf("%u light sources\n", GetLightSourceTable().count);
    if (which != "detect")
        Render(which == "stars" ? kStars : kFlare, image);
    FreeTableRecords(gLightSourceTable);
    FreeImageBuffer(&image);
    return 0;
}
