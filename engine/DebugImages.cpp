#include "engine/DebugImages.h"

#include "diag/BufferUsage.h"
#include "engine/image/AnalysisImage.h"

#include <cstring>

bool gKeepAnalysisImage;

namespace {

KeptImage gKept; // written by the task while a run is on, else on the host's thread

size_t PixelCount(const AnalysisImage &image) {
    return image.sampleBytes / sizeof(PixelSample);
}

} // namespace

void KeepAnalysisImage(const AnalysisImage &image) {
    FreeKeptImage();
    if (!gKeepAnalysisImage)
        return;
    auto *samples = static_cast<PixelSample *>(CountedAlloc(image.sampleBytes));
    auto *flat = static_cast<uint8_t *>(CountedAlloc(PixelCount(image)));
    if (!samples || !flat) {
        CountedFree(samples, image.sampleBytes);
        CountedFree(flat, PixelCount(image));
        return;
    }
    memcpy(samples, image.samples, image.sampleBytes);
    memset(flat, 0, PixelCount(image));
    gKept = {image, flat};
    gKept.image.samples = samples;
}

void KeepFlatAreas(const AnalysisImage &image) {
    if (!gKept.flat || !image.samples || image.sampleBytes != gKept.image.sampleBytes)
        return;
    for (size_t i = 0; i < PixelCount(image); ++i)
        gKept.flat[i] = IsPixelMarked(image.samples[i]);
}

const KeptImage &GetKeptImage() {
    return gKept;
}

void FreeKeptImage() {
    CountedFree(gKept.flat, PixelCount(gKept.image));
    FreeAnalysisImage(&gKept.image);
    gKept = KeptImage{};
}
