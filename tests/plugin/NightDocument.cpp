#include "tests/plugin/NightDocument.h"

#include "engine/InitializationTask.h"
#include "engine/image/FixedPoint.h"
#include "engine/table/LightSourceTable.h"
#include "render/RenderDriver.h"
#include "render/RenderState.h"
#include "render/shape/AngleTables.h"
#include "tests/support/NightScene.h"
#include "tests/support/ParameterKeys.h"
#include "tests/support/TestImage.h"

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

// Between a plane or mask of the whole document and `samples` of the image's area in it.
void CopyRows(const ImageBuffer &image, uint8_t *samples, int32_t size, bool in,
              const host::Document &document, std::vector<uint8_t> *plane) {
    const size_t bytes = static_cast<size_t>(image.width) * static_cast<size_t>(size);
    for (int32_t row = 0; row < image.height; ++row) {
        uint8_t *here = samples + int64_t{row} * image.width * size;
        uint8_t *there =
            plane->data() +
            ((int64_t{image.bounds.top} + row) * document.width + image.bounds.left) * int64_t{size};
        std::memcpy(in ? here : there, in ? there : here, bytes);
    }
}

void CopyPlanes(const ImageBuffer &image, bool in, host::Document *document) {
    for (int32_t plane = 0; plane < PlaneCount(image); ++plane)
        CopyRows(image, image.planes[plane], image.bytesPerSample, in, *document,
                 &document->planes[static_cast<size_t>(plane)]);
    if (image.mask)
        CopyRows(image, image.mask, 1, in, *document, &document->mask);
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
    TestImage night(ModeOf(p.depth, p.colourPlanes), p.depth / 8, p.hasTransparency,
                    {0, 0, p.width, p.height});
    std::vector<SceneLight> lights = MakeSceneLights(p.width, p.height, p.lights, 7);
    // Wide enough to be found in a small picture, and without a flat white core: where a flat area crosses
    // from one worker's band into another's, two runs may differ.
    for (SceneLight &light : lights) {
        light.sigma += 1.2;
        light.red *= 0.6;
        light.green *= 0.6;
        light.blue *= 0.6;
    }
    PaintNightScene(lights, 0.01, 7, &night.buffer);
    CopyPlanes(night.buffer, false, &document);
    return document;
}

host::Document FilteredNight(const host::Document &document, const ParameterSet &parameters,
                             const host::Rectangle &area) {
    const int32_t mode = ModeOf(document.depth, document.colourPlanes);
    const IntRect bounds = {area.left, area.top, area.right, area.bottom};
    host::Document result = document;
    TestImage source(mode, document.depth / 8, document.hasTransparency, bounds, !document.mask.empty());
    TestImage output(mode, document.depth / 8, document.hasTransparency, bounds);
    CopyPlanes(source.buffer, true, &result);
    RenderWhole(source.buffer, parameters, &output.buffer);
    CopyPlanes(output.buffer, false, &result);
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

host::Descriptor ScriptOf(const ParameterSet &set) {
    const auto percent = [](FourCharCode key, int16_t value) {
        return host::UnitFloatValue(key, kUnitPercent, value);
    };
    return {{host::BooleanValue(kKeyOutputSpikesOnly, set.outputSpikesOnly != 0),
             host::EnumeratedValue(kKeyEffect, kTypeEffect, set.effectType),
             percent(kKeyThreshold, set.threshold), percent(kKeyIntensity, set.intensity),
             percent(kKeyLength, set.length), host::UnitFloatValue(kKeyAngle, kUnitAngle, set.angle * 0.1),
             host::IntegerValue(kKeyNumberOfPoints, set.numberOfPoints),
             percent(kKeySpikeSharpness, set.spikeSharpness), percent(kKeySaturation, set.colorSaturation),
             percent(kKeyRainbowIntensity, set.rainbowIntensity),
             percent(kKeyRainbowFrequency, set.rainbowFrequency),
             percent(kKeySecondaryIntensity, set.secondaryIntensity),
             percent(kKeySoftFlareBrightness, set.softFlareBrightness)}};
}
