// Pictures from a case's bytes.
#pragma once

#include "tests/fuzz/CaseBytes.h"
#include "tests/support/TestImage.h"

// Any depth, grey or colour, with or without transparency and mask.
inline TestImage TakePicture(CaseBytes *from, const IntRect &bounds) {
    constexpr int32_t kModes[2][3] = {{kModeRgb8, kModeRgb16, kModeRgb32},
                                      {kModeGray8, kModeGray16, kModeGray32}};
    const int32_t depth = from->Pick(0, 2), kind = from->Take<uint8_t>();
    TestImage image(kModes[kind & 1][depth], 1 << depth, kind >> 1 & 1, bounds, (kind & 4) != 0);
    if (image.buffer.mask)
        std::memset(image.buffer.mask, kind & 8 ? 0 : 255, static_cast<size_t>(image.buffer.maskBytes));
    if (image.buffer.transparencyPlanes)
        std::memset(image.buffer.planes[image.buffer.colorPlanes], kind & 16 ? 0 : 255,
                    static_cast<size_t>(image.buffer.planeSize << depth));
    return image;
}

// A level of 0..255 at the picture's depth, or the four bytes as they are.
inline void PutSample(const ImageBuffer &image, int32_t plane, int64_t pixel, uint8_t level,
                      const uint8_t *raw) {
    uint8_t *to = image.planes[plane] + pixel * image.bytesPerSample;
    const auto level16 = static_cast<uint16_t>(level * 32768 / 255);
    const float real = static_cast<float>(level) / 255.0f;
    const void *forms[] = {&level, &level16, &real};
    std::memcpy(to, raw ? raw : forms[image.bytesPerSample / 2], static_cast<size_t>(image.bytesPerSample));
}
