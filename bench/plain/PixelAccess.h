// Reads and writes colour samples of an image buffer as working pixels. One overload per depth; Sample is
// uint8_t, uint16_t or float.
#pragma once

#include "engine/image/ImageBuffer.h"
#include "render/rows/PixelBlender.h"

#include <cstdint>

inline uint32_t WorkingFromSample(uint8_t sample) {
    return WorkingFrom8(sample);
}
inline uint32_t WorkingFromSample(uint16_t sample) {
    return WorkingFrom16(sample);
}
inline uint32_t WorkingFromSample(float sample) {
    return WorkingFromFloat(sample);
}

inline void StoreWorking(uint32_t working, uint8_t *sample) {
    *sample = WorkingTo8(working);
}
inline void StoreWorking(uint32_t working, uint16_t *sample) {
    *sample = WorkingTo16(working);
}
// A highlight of full scale or above stays as it is: a star never darkens it.
inline void StoreWorking(uint32_t working, float *sample) {
    if (!(*sample >= 1.0f))
        *sample = WorkingToFloat(working);
}

template <typename Sample> Sample *SampleAt(const ImageBuffer &image, int32_t plane, int64_t index) {
    void *samples = image.planes[plane]; // aligned: planes hold whole samples
    return static_cast<Sample *>(samples) + index;
}

// The pixel at sample `index` of every plane. A grey one has three equal channels.
template <typename Sample> WorkingPixel ReadPixel(const ImageBuffer &image, int64_t index) {
    WorkingPixel pixel;
    pixel.channel[0] = WorkingFromSample(*SampleAt<Sample>(image, 0, index));
    if (image.colorPlanes == 1) {
        pixel.channel[1] = pixel.channel[2] = pixel.channel[0];
        return pixel;
    }
    pixel.channel[1] = WorkingFromSample(*SampleAt<Sample>(image, 1, index));
    pixel.channel[2] = WorkingFromSample(*SampleAt<Sample>(image, 2, index));
    return pixel;
}

// Channels up to 16777215. A grey pixel takes the truncated mean of the channels.
template <typename Sample>
void WritePixel(const WorkingPixel &pixel, const ImageBuffer &image, int64_t index) {
    const uint32_t *channel = pixel.channel;
    if (image.colorPlanes == 1) {
        StoreWorking((channel[0] + channel[1] + channel[2]) / 3, SampleAt<Sample>(image, 0, index));
        return;
    }
    for (int32_t plane = 0; plane < 3; ++plane)
        StoreWorking(channel[plane], SampleAt<Sample>(image, plane, index));
}
