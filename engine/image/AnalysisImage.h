// The image that detection looks at: a copy of the filtered area, reduced so that its longer side is at most
// 1200 pixels. It is always a copy of its own: marking a flat area never touches the picture.
#pragma once

#include "diag/ResultCodes.h"
#include "engine/image/Geometry.h"
#include "engine/image/ImageBuffer.h"
#include "engine/image/WorkerThreads.h"

#include <atomic>
#include <cstdint>

constexpr int32_t kAnalysisLongerSide = 1200;

struct PixelSample {
    uint32_t red, green, blue; // working values, 0..16777215 (0xFFFFFFFF in a marked pixel)
    uint32_t coverage;         // 0 where the picture is fully transparent, up to 0xFFFFFFFF
    uint32_t selectionLevel;   // selection mask, full scale 0xFFFFFFFF
};

// Owner of `samples`: whoever prepared the image; FreeAnalysisImage releases them.
struct AnalysisImage {
    IntRect bounds;         // in analysis pixels: document coordinates divided by `scale`
    double scale;           // `AnalysisScale`: document pixels per analysis pixel, 1.0 when not reduced
    uint32_t maxBrightness; // `MaxBrightness`, over every pixel inside the bounds
    PixelSample *samples;   // row by row over the bounds
    size_t sampleBytes;
};

// Builds the analysis image of `source` (bounds, samples, maxBrightness). A reduction stops when *cancel
// becomes non-zero; the `threads` share it. Returns kNoError, kUserCanceledErr or kParamErr; on failure *out
// is left alone.
HostResult PrepareAnalysisImage(const ImageBuffer &source, const std::atomic<uint8_t> &cancel,
                                AnalysisImage *out, const WorkerThreads &threads = kThisThreadOnly);
void FreeAnalysisImage(AnalysisImage *image);

// The pixel at (x, y); all five values are 0 outside the bounds.
inline PixelSample FetchPixel(const AnalysisImage &image, int32_t x, int32_t y) {
    if (!RectContains(image.bounds, x, y))
        return PixelSample{0, 0, 0, 0, 0};
    const int64_t width = image.bounds.right - image.bounds.left;
    return image.samples[(y - image.bounds.top) * width + (x - image.bounds.left)];
}

// What a pixel that is taken out of detection becomes: white, covered, not selected.
constexpr PixelSample kMarkedSample = {0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0};
// No other thread may use the image meanwhile.
void MarkPixel(AnalysisImage *image, int32_t x, int32_t y);
inline bool IsPixelMarked(const PixelSample &p) {
    return p.red == 0xFFFFFFFFu;
}

inline uint32_t PixelBrightness(const PixelSample &p) {
    return static_cast<uint32_t>((uint64_t{p.red} + p.green + p.blue) / 3);
}

inline bool IsPixelSelected(const PixelSample &p) {
    return p.selectionLevel >= 0x7FFFFFFFu && p.coverage != 0;
}
