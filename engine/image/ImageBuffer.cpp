#include "engine/image/ImageBuffer.h"

#include "diag/BufferUsage.h"

#include <cstring>
#include <limits>

namespace {

// More samples than this in a plane could not be counted in bytes, whatever the depth and the planes.
constexpr int64_t kMaxPlaneSize = std::numeric_limits<int64_t>::max() / (int64_t{kMaxPlanes} * 4);

bool IsBufferShapeValid(int32_t bytesPerSample, int32_t transparencyPlanes, const IntRect &bounds) {
    const bool depthKnown = bytesPerSample == 1 || bytesPerSample == 2 || bytesPerSample == 4;
    if (!depthKnown || transparencyPlanes < 0 || transparencyPlanes > 1 || IsEmptyRect(bounds))
        return false;
    const int64_t width = int64_t{bounds.right} - bounds.left;
    const int64_t height = int64_t{bounds.bottom} - bounds.top;
    constexpr int64_t kMaxSide = std::numeric_limits<int32_t>::max();
    return width <= kMaxSide && height <= kMaxSide && width <= kMaxPlaneSize / height;
}

ImageBuffer DescribeBuffer(int32_t imageMode, int32_t bytesPerSample, int32_t transparencyPlanes,
                           const IntRect &bounds) {
    ImageBuffer b{};
    b.imageMode = imageMode;
    b.bytesPerSample = bytesPerSample;
    b.bitsPerSample = bytesPerSample * 8;
    b.colorPlanes = IsGrayMode(imageMode) ? 1 : 3;
    b.transparencyPlanes = transparencyPlanes;
    b.bounds = bounds;
    b.width = bounds.right - bounds.left;
    b.height = bounds.bottom - bounds.top;
    b.planeSize = int64_t{b.width} * b.height;
    b.pixelBytes = b.planeSize * bytesPerSample * PlaneCount(b);
    return b;
}

uint8_t *AllocateBytes(int64_t bytes) {
    if (static_cast<uint64_t>(bytes) > std::numeric_limits<size_t>::max())
        return nullptr;
    return static_cast<uint8_t *>(CountedAlloc(static_cast<size_t>(bytes)));
}

} // namespace

HostResult AllocateUnclearedImageBuffer(int32_t imageMode, int32_t bytesPerSample, int32_t transparencyPlanes,
                                        const IntRect &bounds, bool wantMask, ImageBuffer *buffer,
                                        bool *maskFailed) {
    if (maskFailed)
        *maskFailed = false;
    if (!IsBufferShapeValid(bytesPerSample, transparencyPlanes, bounds))
        return kMemFullErr;
    ImageBuffer b = DescribeBuffer(imageMode, bytesPerSample, transparencyPlanes, bounds);
    b.pixels = AllocateBytes(b.pixelBytes);
    if (!b.pixels)
        return kMemFullErr;
    if (wantMask) {
        b.maskBytes = b.planeSize;
        b.mask = AllocateBytes(b.maskBytes);
        if (!b.mask) {
            CountedFree(b.pixels, static_cast<size_t>(b.pixelBytes));
            if (maskFailed)
                *maskFailed = true;
            return kMemFullErr;
        }
    }
    for (int32_t plane = 0; plane < PlaneCount(b); ++plane)
        b.planes[plane] = b.pixels + b.planeSize * bytesPerSample * plane;
    *buffer = b;
    return kNoError;
}

HostResult AllocateImageBuffer(int32_t imageMode, int32_t bytesPerSample, int32_t transparencyPlanes,
                               const IntRect &bounds, bool wantMask, ImageBuffer *buffer, bool *maskFailed) {
    const HostResult result = AllocateUnclearedImageBuffer(imageMode, bytesPerSample, transparencyPlanes,
                                                           bounds, wantMask, buffer, maskFailed);
    if (result != kNoError)
        return result;
    memset(buffer->pixels, 0, static_cast<size_t>(buffer->pixelBytes));
    if (buffer->mask)
        memset(buffer->mask, 0, static_cast<size_t>(buffer->maskBytes));
    return kNoError;
}

void FreeImageBuffer(ImageBuffer *buffer) {
    CountedFree(buffer->pixels, static_cast<size_t>(buffer->pixelBytes));
    FreeImageMask(buffer);
    *buffer = ImageBuffer{};
}

void FreeImageMask(ImageBuffer *buffer) {
    CountedFree(buffer->mask, static_cast<size_t>(buffer->maskBytes));
    buffer->mask = nullptr;
    buffer->maskBytes = 0;
}

uint32_t ReadSample(const ImageBuffer &buffer, const uint8_t *plane, int64_t index) {
    if (buffer.bytesPerSample == 1)
        return WorkingFrom8(plane[index]);
    if (buffer.bytesPerSample == 2) {
        uint16_t sample;
        memcpy(&sample, plane + index * 2, sizeof sample);
        return WorkingFrom16(sample);
    }
    float sample;
    memcpy(&sample, plane + index * 4, sizeof sample);
    return WorkingFromFloat(sample);
}
