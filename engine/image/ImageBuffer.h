// A planar copy of a piece of the host's image, and the conversion of its samples to and from working values.
#pragma once

#include "diag/ResultCodes.h"
#include "engine/image/Geometry.h"

#include <cstdint>

constexpr int32_t kMaxPlanes = 4; // three colours and transparency

// Host image modes with one colour plane.
constexpr int32_t kModeGray8 = 1, kModeGray16 = 10, kModeGray32 = 17;
constexpr int32_t kModeRgb8 = 3, kModeRgb16 = 11, kModeRgb32 = 16;

inline bool IsGrayMode(int32_t mode) {
    return mode == kModeGray8 || mode == kModeGray16 || mode == kModeGray32;
}

// Owner of `pixels` and `mask`: whoever allocated the buffer, and only FreeImageBuffer releases them. Samples
// are in the host's form: uint8 0..255, uint16 0..32768 (larger values may come in), or float.
struct ImageBuffer {
    int32_t imageMode;
    int32_t bytesPerSample; // 1, 2 or 4
    int32_t bitsPerSample;
    int32_t colorPlanes;                                              // 1 or 3
    int32_t transparencyPlanes;                                       // 0 or 1
    int32_t layerMaskPlanes, invertedLayerMaskPlanes, nonLayerPlanes; // always 0
    int32_t width, height;
    IntRect bounds;    // the area held, in document coordinates
    int64_t planeSize; // width × height, in samples
    uint8_t
        *planes[kMaxPlanes]; // plane i starts at pixels + i × bytesPerSample × planeSize; null past the last
    uint8_t *pixels;         // colour planes, then transparency; each plane row by row without gaps
    int64_t pixelBytes;
    uint8_t *mask; // selection mask, one byte a pixel, or null
    int64_t maskBytes;
};

// Allocates the pixels (and the mask, when wanted) of an area; every sample is 0, the mask too. On success
// *buffer is overwritten; on failure it is left alone and the result is kMemFullErr (pixels) or kMemFullErr
// with *maskFailed true (mask). `transparencyPlanes` is 0 or 1, `bytesPerSample` 1, 2 or 4; an empty or
// negative area, or one whose bytes do not fit size_t, fails too.
HostResult AllocateImageBuffer(int32_t imageMode, int32_t bytesPerSample, int32_t transparencyPlanes,
                               const IntRect &bounds, bool wantMask, ImageBuffer *buffer, bool *maskFailed);
// The same with samples of any value, for a caller that writes every one of them.
HostResult AllocateUnclearedImageBuffer(int32_t imageMode, int32_t bytesPerSample, int32_t transparencyPlanes,
                                        const IntRect &bounds, bool wantMask, ImageBuffer *buffer,
                                        bool *maskFailed);
// Frees what the buffer owns and sets it to all zero. A zeroed buffer may be passed.
void FreeImageBuffer(ImageBuffer *buffer);
// Frees the mask alone.
void FreeImageMask(ImageBuffer *buffer);

inline int32_t PlaneCount(const ImageBuffer &b) {
    return b.colorPlanes + b.transparencyPlanes;
}

// --- Samples
// ------------------------------------------------------------------------------------------------- A working
// value is 0..16777215. Each pair round-trips every sample of its depth exactly.

inline uint32_t WorkingFrom8(uint8_t v) {
    return v * 65793u;
}
inline uint8_t WorkingTo8(uint32_t w) {
    return static_cast<uint8_t>((w + 32896u) / 65793u);
}

constexpr uint32_t kHost16Full = 32768;
inline uint32_t WorkingFrom16(uint16_t v) {
    const uint64_t clamped = v < kHost16Full ? v : kHost16Full;
    return static_cast<uint32_t>((clamped * 16777215u + 16384u) / 32768u);
}
inline uint16_t WorkingTo16(uint32_t w) {
    return static_cast<uint16_t>((uint64_t{w} * 32768u + 8388607u) / 16777215u);
}

// Not-a-number reads as 0, everything else is clamped to 0..1.
inline uint32_t WorkingFromFloat(float f) {
    if (!(f > 0.0f))
        return 0;
    if (f >= 1.0f)
        return 16777215u;
    return static_cast<uint32_t>(static_cast<double>(f) * 16777215.0 + 0.5);
}
inline float WorkingToFloat(uint32_t w) {
    return static_cast<float>(w / 16777215.0);
}

// Sample `index` of a plane as a working value; the transparency plane is read the same way.
uint32_t ReadSample(const ImageBuffer &buffer, const uint8_t *plane, int64_t index);
