// A pixel of the image that detection looks at, and that image.
#pragma once

#include "engine/image/Geometry.h"

#include <cstddef>
#include <cstdint>

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

// The pixel at (x, y); all five values are 0 outside the bounds.
inline PixelSample FetchPixel(const AnalysisImage &image, int32_t x, int32_t y) {
    if (!RectContains(image.bounds, x, y))
        return PixelSample{0, 0, 0, 0, 0};
    const int64_t width = image.bounds.right - image.bounds.left;
    return image.samples[(y - image.bounds.top) * width + (x - image.bounds.left)];
}

inline bool IsPixelMarked(const PixelSample &p) {
    return p.red == 0xFFFFFFFFu;
}

inline uint32_t PixelBrightness(const PixelSample &p) {
    return static_cast<uint32_t>((uint64_t{p.red} + p.green + p.blue) / 3);
}

inline bool IsPixelSelected(const PixelSample &p) {
    return p.selectionLevel >= 0x7FFFFFFFu && p.coverage != 0;
}
