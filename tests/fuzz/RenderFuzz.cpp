// Any settings, lights and rectangles: each processor's path, in tiles and shared out, gives the samples of
// the portable one in one piece. Stamps are kept from case to case, as from preview to preview.
#include "engine/image/FixedPoint.h"
#include "render/RenderDriver.h"
#include "render/RenderState.h"
#include "render/rows/RenderPath.h"
#include "render/shape/ParameterTable.h"
#include "tests/fuzz/FuzzPicture.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/StandardThreads.h"

namespace {

RenderSettings TakeSettings(CaseBytes *from) {
    constexpr double kScales[] = {100.0, 100.0, 25.0, 37.5, 66.7, 150.0, 400.0};
    RenderSettings s{};
    const int32_t scale = from->Pick(0, 7);
    s.scale = scale < 7 ? kScales[scale] : from->Take<double>(); // often out of range or no number
    const bool isWild = from->Pick(0, 7) == 0;
    for (const ParameterInfo &parameter : kParameters) // up to one too much, or anything
        s.*parameter.setting =
            isWild ? from->Take<int16_t>()
                   : static_cast<int16_t>(from->Pick(parameter.minimum - 1, parameter.maximum + 1));
    s.effectsOnly = from->Pick(0, 3) == 0;
    s.effectType = kStandardStar + static_cast<uint32_t>(from->Pick(0, 7)); // the last one is none
    return s;
}

IntRect TakeTarget(CaseBytes *from, const IntRect &bounds) {
    if (from->Pick(0, 1) == 0)
        return bounds;
    const int32_t left = from->Pick(bounds.left - 3, bounds.right - 1);
    const int32_t top = from->Pick(bounds.top - 3, bounds.bottom - 1);
    return {left, top, from->Pick(left + 1, bounds.right + 3), from->Pick(top + 1, bounds.bottom + 3)};
}

std::vector<LightSource> TakeLights(CaseBytes *from, const IntRect &near) {
    std::vector<LightSource> lights;
    for (int i = from->Pick(0, 7); i >= 0; --i) {
        auto light = from->Take<LightSource>();
        if (from->Pick(0, 15) != 0) {
            light.X = from->Pick(near.left - 30, near.right + 30);
            light.Y = from->Pick(near.top - 30, near.bottom + 30);
        }
        light.State %= 3;
        lights.insert(lights.end(), from->Pick(0, 7) == 0 ? 24 : 1, light); // until all is bright
    }
    return lights;
}

struct RenderCase {
    RenderSettings settings;
    IntRect target;
    std::vector<LightSource> lights;

    void Draw(const RenderPath *path, const ImageBuffer &source, int32_t step, int32_t workers,
              ImageBuffer *output) {
        gRenderPath = path;
        const std::atomic<uint8_t> abort{0};
        for (int32_t y = target.top; y < target.bottom; y += step)
            for (int32_t x = target.left; x < target.right; x += step)
                Require(RenderEffect(settings, source, IntersectRects({x, y, x + step, y + step}, target),
                                     {lights.data(), static_cast<uint32_t>(lights.size())}, abort, output,
                                     StandardThreads(workers)),
                        "a render ends");
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t length) {
    CaseBytes from{bytes, length};
    const int32_t left = from.Pick(-40, 40), top = from.Pick(-40, 40);
    const IntRect bounds{left, top, left + from.Pick(1, 160), top + from.Pick(1, 64)};
    const TestImage source = TakePicture(&from, bounds);
    for (int64_t i = 0, samples = source.buffer.planeSize * PlaneCount(source.buffer); i < samples; ++i)
        PutSample(source.buffer, 0, i, static_cast<uint8_t>(i * 37 >> (i & 3)), nullptr);
    for (int i = from.Pick(0, 12); i > 0; --i) { // samples of any bytes
        const auto raw = from.Take<uint32_t>();
        PutSample(source.buffer, 0, from.Pick(0, 65535) % source.buffer.planeSize, 0,
                  reinterpret_cast<const uint8_t *>(&raw));
    }
    RenderCase c{TakeSettings(&from), TakeTarget(&from, bounds), {}};
    constexpr uint32_t kFloors[] = {kFloor8Bit, kFloor16Bit, kFloor32Bit, kFloorPreview};
    gFloor = kFloors[from.Pick(0, 3)];
    gPreciseMode = from.Pick(0, 1) == 0;
    SetImageGeometry({0, 0, from.Pick(1, 1200), from.Pick(1, 1200)});
    const int32_t step = from.Pick(0, 1) == 0 ? from.Pick(20, 80) : 200, workers = from.Pick(1, 4);
    c.lights = TakeLights(&from, bounds);
    const TestImage expected(source.buffer.imageMode, source.buffer.bytesPerSample,
                             source.buffer.transparencyPlanes, c.target);
    std::memset(expected.buffer.pixels, 0x3C, static_cast<size_t>(expected.buffer.pixelBytes));
    ImageBuffer output = expected.buffer; // borrowed
    const std::vector<uint8_t> before = source.Bytes(), untouched = expected.Bytes();
    c.Draw(&kPortablePath, source.buffer, 200, 1, &output);
    const std::vector<uint8_t> portable = expected.Bytes();
    for (const RenderPath *path : {&kPortablePath, Avx2Path(), Avx512Path()}) {
        if (!path)
            continue;
        std::memcpy(output.pixels, untouched.data(), untouched.size());
        c.Draw(path, source.buffer, step, workers, &output);
        Require(expected.Bytes() == portable, path->name);
    }
    Require(TakeReports().empty(), "nothing is reported");
    const std::atomic<uint8_t> abort = from.Pick(0, 7) == 7;
    ResetRenderState(); // or all would be there
    FailAllocation(from.Pick(0, 60), from.Pick(0, 1) != 0);
    RenderEffect(c.settings, source.buffer, c.target,
                 {c.lights.data(), static_cast<uint32_t>(c.lights.size())}, abort, &output);
    FailAllocation(0, false);
    Require(TakeReports().size() <= 1, "a lack of memory is told once");
    ResetRenderState();
    std::memcpy(output.pixels, untouched.data(), untouched.size());
    c.Draw(&kPortablePath, source.buffer, 200, 1, &output);
    Require(expected.Bytes() == portable, "the next run lacks nothing");
    Require(source.Bytes() == before, "the source stays");
    return 0;
}
