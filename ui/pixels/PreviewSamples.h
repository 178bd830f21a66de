// Samples of any depth as 8-bit values for the screen.
#pragma once

#include "engine/image/ImageBuffer.h"

#include <cstdint>

inline uint8_t ScreenSample(uint8_t sample) {
    return sample;
}
inline uint8_t ScreenSample(uint16_t sample) {
    return WorkingTo8(WorkingFrom16(sample));
}
inline uint8_t ScreenSample(float sample) {
    return WorkingTo8(WorkingFromFloat(sample));
}

inline uint32_t ScreenPixel(uint32_t red, uint32_t green, uint32_t blue) {
    return 0xFF000000 | red << 16 | green << 8 | blue;
}

// Row y of a plane, so that the sample of document column x is at [x - bounds.left].
template <typename Sample> const Sample *PlaneRow(const ImageBuffer &image, int32_t plane, int32_t y) {
    const void *samples = image.planes[plane]; // aligned: planes hold whole samples
    // cppcheck-suppress CastIntegerToAddressAtReturn ; the cast is to a pointer
    return static_cast<const Sample *>(samples) + (int64_t{y} - image.bounds.top) * image.width;
}

// The rows of red, green and blue; a grey image's only plane three times.
template <typename Sample> struct ColorRows { const Sample *channel[3]; };
template <typename Sample> ColorRows<Sample> RowsAt(const ImageBuffer &image, int32_t y) {
    ColorRows<Sample> rows;
    for (int32_t c = 0; c < 3; ++c)
        rows.channel[c] = PlaneRow<Sample>(image, image.colorPlanes == 1 ? 0 : c, y);
    return rows;
}
