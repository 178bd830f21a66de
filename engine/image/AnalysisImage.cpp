#include "engine/image/AnalysisImage.h"

#include "diag/BufferUsage.h"
#include "engine/image/AnalysisReduction.h"

#include <algorithm>

namespace {

// 1 / 1200, written out: the product and the quotient differ in the last bit.
constexpr double kScalePerPixel = 0.0008333333333333334;
// Keeps a far edge that falls on a whole analysis pixel from reaching into the next one.
constexpr double kEdgeSlack = 1e-11;

bool IsSourceUsable(const ImageBuffer &source) {
    return source.pixels && !IsEmptyRect(source.bounds) &&
           int64_t{source.bounds.right} - source.bounds.left == source.width &&
           int64_t{source.bounds.bottom} - source.bounds.top == source.height;
}

// A thin area just left of or above the origin would vanish, since both its edges go toward the origin.
IntRect ReduceBounds(const IntRect &bounds, double scale) {
    IntRect r{static_cast<int32_t>(bounds.left / scale), static_cast<int32_t>(bounds.top / scale),
              static_cast<int32_t>((bounds.right + scale - kEdgeSlack) / scale),
              static_cast<int32_t>((bounds.bottom + scale - kEdgeSlack) / scale)};
    r.right = std::max(r.right, r.left + 1);
    r.bottom = std::max(r.bottom, r.top + 1);
    return r;
}

HostResult FillSamples(const ImageBuffer &source, const std::atomic<uint8_t> &cancel,
                       const WorkerThreads &threads, AnalysisImage *image) {
    if (image->scale != 1.0)
        return ReduceToAnalysisImage(source, cancel, image, threads);
    for (int32_t y = 0; y < source.height; ++y) {
        PixelSample *row = image->samples + int64_t{y} * source.width;
        ReadSampleRow(source, source.bounds.top + y, row);
        image->maxBrightness = std::max(image->maxBrightness, LargestBrightness(row, source.width));
    }
    return kNoError;
}

} // namespace

HostResult PrepareAnalysisImage(const ImageBuffer &source, const std::atomic<uint8_t> &cancel,
                                AnalysisImage *out, const WorkerThreads &threads) {
    if (!IsSourceUsable(source))
        return kParamErr;
    const int32_t longerSide = std::max(source.width, source.height);
    AnalysisImage image{};
    image.scale = longerSide <= kAnalysisLongerSide ? 1.0 : longerSide * kScalePerPixel;
    image.bounds = image.scale == 1.0 ? source.bounds : ReduceBounds(source.bounds, image.scale);
    const auto width = static_cast<size_t>(image.bounds.right - image.bounds.left);
    const size_t pixels = width * static_cast<size_t>(image.bounds.bottom - image.bounds.top);
    image.sampleBytes = pixels * sizeof(PixelSample);
    image.samples = static_cast<PixelSample *>(CountedAlloc(image.sampleBytes));
    if (!image.samples)
        return kParamErr;
    const HostResult result = FillSamples(source, cancel, threads, &image);
    if (result != kNoError) {
        FreeAnalysisImage(&image);
        return result;
    }
    *out = image;
    return kNoError;
}

void FreeAnalysisImage(AnalysisImage *image) {
    CountedFree(image->samples, image->sampleBytes);
    *image = AnalysisImage{};
}

void MarkPixel(AnalysisImage *image, int32_t x, int32_t y) {
    if (!RectContains(image->bounds, x, y))
        return;
    const int64_t width = image->bounds.right - image->bounds.left;
    image->samples[(y - image->bounds.top) * width + (x - image->bounds.left)] = kMarkedSample;
}
