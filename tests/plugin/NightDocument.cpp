#include "tests/plugin/NightDocument.h"

#include "engine/InitializationTask.h"
#include "engine/image/FixedPoint.h"
#include "engine/table/LightSourceTable.h"
#include "render/RenderDriver.h"
#include "render/shape/AngleTables.h"
#include "tests/support/NightScene.h"

#include <cstring>
#include <stdexcept>

namespace {

int32_t ModeOf(int32_t depth, int32_t colourPlanes) {
    const bool isGrey = colourPlanes == 1;
    if (depth == 16)
        return isGrey ? kModeGray16 : kModeRgb16;
    if (depth == 32)
        return isGrey ? kModeGray32 : kModeRgb32;
    return isGrey ? kModeGray8 : kModeRgb8;
}

struct Buffer {
    ImageBuffer image{};
    Buffer(int32_t mode, int32_t bytesPerSample, int32_t transparency, const IntRect &area, bool wantMask) {
        bool maskFailed = false;
        if (AllocateImageBuffer(mode, bytesPerSample, transparency, area, wantMask, &image, &maskFailed) !=
            kNoError)
            throw std::bad_alloc();
    }
    ~Buffer() { FreeImageBuffer(&image); }
    Buffer(const Buffer &) = delete;
    Buffer &operator=(const Buffer &) = delete;
};

// One row of an area inside a plane or mask of the whole document.
uint8_t *RowOf(std::vector<uint8_t> &plane, const host::Document &document, const IntRect &area, int32_t row,
               int32_t size) {
    return plane.data() + ((int64_t{area.top} + row) * document.width + area.left) * size;
}

void CopyIn(host::Document &document, ImageBuffer *image) {
    const int32_t size = image->bytesPerSample;
    for (int32_t row = 0; row < image->height; ++row) {
        const int64_t at = int64_t{row} * image->width;
        const size_t length = static_cast<size_t>(image->width);
        for (int32_t plane = 0; plane < PlaneCount(*image); ++plane)
            std::memcpy(
                image->planes[plane] + at * size,
                RowOf(document.planes[static_cast<size_t>(plane)], document, image->bounds, row, size),
                length * static_cast<size_t>(size));
        if (image->mask)
            std::memcpy(image->mask + at, RowOf(document.mask, document, image->bounds, row, 1), length);
    }
}

void CopyOut(const ImageBuffer &image, host::Document *document) {
    const int32_t size = image.bytesPerSample;
    for (int32_t plane = 0; plane < PlaneCount(image); ++plane)
        for (int32_t row = 0; row < image.height; ++row)
            std::memcpy(
                RowOf(document->planes[static_cast<size_t>(plane)], *document, image.bounds, row, size),
                image.planes[plane] + int64_t{row} * image.width * size,
                static_cast<size_t>(image.width * size));
}

void RenderWhole(const ImageBuffer &source, const ParameterSet &parameters, ImageBuffer *output) {
    SetImageGeometry(source.bounds);
    BuildAngleTables();
    ResetRenderState();
    StartLightSourceTableInit(source);
    WaitLightSourceTable(nullptr, nullptr, 60000);
    gPreciseMode = true;
    gFloor = FloorForBytesPerSample(source.bytesPerSample);
    const std::atomic<uint8_t> abort = 0;
    const bool done = RenderEffect(MakeRenderSettings(parameters, 100.0), source, source.bounds,
                                   GetLightSourceTable(), abort, output);
    StopLightSourceTableInit();
    CloseLightSourceTableThread();
    FreeRenderState();
    if (!done)
        throw std::runtime_error("the direct render failed");
}

} // namespace

host::Document MakeNight(const NightPicture &p) {
    host::Document document =
        host::MakeDocument(p.width, p.height, p.depth, p.colourPlanes, p.hasTransparency);
    Buffer buffer(ModeOf(p.depth, p.colourPlanes), p.depth / 8, p.hasTransparency, {0, 0, p.width, p.height},
                  false);
    std::vector<SceneLight> lights = MakeSceneLights(p.width, p.height, p.lights, 7);
    // Wide enough to be found in a small picture, and without a flat white core: where a flat area crosses
    // from one worker's band into another's, two runs may differ.
    for (SceneLight &light : lights) {
        light.sigma += 1.2;
        light.red *= 0.6;
        light.green *= 0.6;
        light.blue *= 0.6;
    }
    PaintNightScene(lights, 0.01, 7, &buffer.image);
    CopyOut(buffer.image, &document);
    return document;
}

host::Document FilteredNight(const host::Document &document, const ParameterSet &parameters,
                             const host::Rectangle &area) {
    const int32_t mode = ModeOf(document.depth, document.colourPlanes);
    const IntRect bounds = {area.left, area.top, area.right, area.bottom};
    host::Document result = document;
    Buffer source(mode, document.depth / 8, document.hasTransparency, bounds, !document.mask.empty());
    Buffer output(mode, document.depth / 8, document.hasTransparency, bounds, false);
    CopyIn(result, &source.image);
    RenderWhole(source.image, parameters, &output.image);
    CopyOut(output.image, &result);
    return result;
}

int64_t DifferentSamples(const host::Document &a, const host::Document &b) {
    const size_t size = static_cast<size_t>(host::BytesPerSample(a));
    int64_t count = 0;
    for (size_t plane = 0; plane < a.planes.size(); ++plane)
        for (size_t at = 0; at < a.planes[plane].size(); at += size)
            count += std::memcmp(a.planes[plane].data() + at, b.planes[plane].data() + at, size) != 0;
    return count;
}
