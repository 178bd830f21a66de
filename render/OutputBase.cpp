#include "render/OutputBase.h"

#include "diag/ErrorReport.h"

#include <cstring>

namespace {

constexpr uint32_t kIncompatibleSite = 153;

bool SameLayout(const ImageBuffer &a, const ImageBuffer &b) {
    return a.imageMode == b.imageMode && a.bytesPerSample == b.bytesPerSample &&
           a.colorPlanes == b.colorPlanes && a.transparencyPlanes == b.transparencyPlanes;
}

// Byte offset of (x, y) in each plane of an image that holds it.
size_t RowOffset(const ImageBuffer &image, int32_t x, int32_t y) {
    const int64_t row = int64_t{y} - image.bounds.top;
    return static_cast<size_t>((row * image.width + (int64_t{x} - image.bounds.left)) * image.bytesPerSample);
}

size_t RowBytes(const IntRect &area, const ImageBuffer &image) {
    return static_cast<size_t>(int64_t{area.right} - area.left) * static_cast<size_t>(image.bytesPerSample);
}

bool CopyArea(const ImageBuffer &source, const IntRect &area, ImageBuffer *output) {
    if (!SameLayout(source, *output)) {
        ReportError({kIncompatibleSite, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "Programming error:  Incompatible image attributes.");
        return false;
    }
    const size_t rowBytes = RowBytes(area, source);
    for (int32_t plane = 0; plane < PlaneCount(source); ++plane)
        for (int32_t y = area.top; y < area.bottom; ++y)
            std::memcpy(output->planes[plane] + RowOffset(*output, area.left, y),
                        source.planes[plane] + RowOffset(source, area.left, y), rowBytes);
    return true;
}

void ClearColors(const IntRect &area, ImageBuffer *output) {
    const size_t rowBytes = RowBytes(area, *output);
    for (int32_t plane = 0; plane < output->colorPlanes; ++plane)
        for (int32_t y = area.top; y < area.bottom; ++y)
            std::memset(output->planes[plane] + RowOffset(*output, area.left, y), 0, rowBytes);
}

} // namespace

bool PrepareOutputBase(const ImageBuffer &source, const IntRect &target, bool effectsOnly,
                       ImageBuffer *output) {
    const IntRect area = IntersectRects(IntersectRects(target, source.bounds), output->bounds);
    const bool isInPlace = output->pixels == source.pixels;
    if (!effectsOnly)
        return isInPlace || CopyArea(source, area, output);
    if (output->transparencyPlanes > 0 && !isInPlace && !CopyArea(source, area, output))
        return false;
    ClearColors(area, output);
    return true;
}
