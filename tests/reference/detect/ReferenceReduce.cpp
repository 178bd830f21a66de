#include "tests/reference/detect/ReferenceReduce.h"

#include "tests/reference/ReferenceMath.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace reference {

namespace {

constexpr int32_t kLongerSide = 1200;
constexpr double kLongerSideShare = 0.0008333333333333334;

int64_t IndexOf(const IntRect &bounds, int64_t x, int64_t y) {
    return (y - bounds.top) * (int64_t{bounds.right} - bounds.left) + (x - bounds.left);
}

// A working value widened to 32 bits, so that 0 stays 0 and full stays full.
uint32_t WidenWorking(uint32_t working) {
    return working << 8 | working >> 16;
}

PixelSample DocumentSample(const ImageBuffer &image, int64_t x, int64_t y) {
    const int64_t index = IndexOf(image.bounds, x, y);
    const auto color = ReadColor(image, index);
    PixelSample sample{color[0], color[1], color[2], 0xFFFFFFFFu, 0xFFFFFFFFu};
    if (image.transparencyPlanes == 1) {
        const uint8_t *plane = image.planes[image.colorPlanes];
        sample.coverage =
            WidenWorking(ReadWorking(image.bytesPerSample, plane + index * image.bytesPerSample));
    }
    if (image.mask)
        sample.selectionLevel = image.mask[index] * 0x01010101u;
    return sample;
}

// How much of the document pixels first, first + 1, ... lies in the window of one analysis pixel.
struct Window {
    int64_t first;
    std::vector<double> weights;
};

// A window without pixels takes the one that lies nearest to it.
Window WindowOf(int32_t position, double scale, int32_t low, int32_t high) {
    const auto pixel = static_cast<int64_t>(position * scale + 0.5);
    const double centre = static_cast<double>(pixel) + 0.5;
    const double from = std::max<double>(centre - scale / 2, low),
                 to = std::min<double>(centre + scale / 2, high);
    if (from >= to) {
        const double toFirst = std::abs(low + 0.5 - centre), toLast = std::abs(high - 0.5 - centre);
        return {toFirst < toLast ? low : high - 1, {1.0}};
    }
    Window window{static_cast<int64_t>(std::floor(from)), {}};
    for (int64_t x = window.first; static_cast<double>(x) < to; ++x) {
        const double left = std::max(from, static_cast<double>(x));
        const double right = std::min(to, static_cast<double>(x + 1));
        window.weights.push_back(right - left);
    }
    return window;
}

uint32_t Average(double sum, double weight) {
    return static_cast<uint32_t>(std::min(sum / weight + 0.5, 4294967295.0));
}

PixelSample AverageSample(const ImageBuffer &image, const Window &across, const Window &down) {
    double sums[5] = {}, weight = 0;
    for (size_t j = 0; j < down.weights.size(); ++j)
        for (size_t i = 0; i < across.weights.size(); ++i) {
            const double share = across.weights[i] * down.weights[j];
            const PixelSample s = DocumentSample(image, across.first + static_cast<int64_t>(i),
                                                 down.first + static_cast<int64_t>(j));
            const double values[5] = {double(s.red), double(s.green), double(s.blue), double(s.coverage),
                                      double(s.selectionLevel)};
            for (int v = 0; v < 5; ++v)
                sums[v] += share * values[v];
            weight += share;
        }
    return {Average(sums[0], weight), Average(sums[1], weight), Average(sums[2], weight),
            Average(sums[3], weight), Average(sums[4], weight)};
}

// Both ends of an axis in reduced pixels; never the same.
std::pair<int32_t, int32_t> ReducedSpan(int32_t low, int32_t high, double s) {
    const auto from = static_cast<int32_t>(low / s), to = static_cast<int32_t>((high + s - 1e-11) / s);
    return {from, to > from ? to : from + 1};
}

IntRect ReducedBounds(const IntRect &bounds, double s) {
    const auto [left, right] = ReducedSpan(bounds.left, bounds.right, s);
    const auto [top, bottom] = ReducedSpan(bounds.top, bounds.bottom, s);
    return {left, top, right, bottom};
}

} // namespace

Analysis PrepareAnalysis(const ImageBuffer &image) {
    const IntRect &b = image.bounds;
    const int32_t longer = std::max(b.right - b.left, b.bottom - b.top);
    Analysis analysis{b, 1.0, 0, {}};
    if (longer > kLongerSide) {
        analysis.scale = longer * kLongerSideShare;
        analysis.bounds = ReducedBounds(b, analysis.scale);
    }
    const IntRect &r = analysis.bounds;
    for (int32_t y = r.top; y < r.bottom; ++y)
        for (int32_t x = r.left; x < r.right; ++x) {
            if (longer > kLongerSide)
                analysis.samples.push_back(AverageSample(image, WindowOf(x, analysis.scale, b.left, b.right),
                                                         WindowOf(y, analysis.scale, b.top, b.bottom)));
            else
                analysis.samples.push_back(DocumentSample(image, x, y));
        }
    for (const PixelSample &sample : analysis.samples)
        analysis.maxBrightness = std::max(analysis.maxBrightness, static_cast<uint32_t>(Brightness(sample)));
    return analysis;
}

bool IsInside(const Analysis &analysis, int64_t x, int64_t y) {
    const IntRect &b = analysis.bounds;
    return b.left <= x && x < b.right && b.top <= y && y < b.bottom;
}

PixelSample Fetch(const Analysis &analysis, int64_t x, int64_t y) {
    if (!IsInside(analysis, x, y))
        return {0, 0, 0, 0, 0};
    return analysis.samples[IndexOf(analysis.bounds, x, y)];
}

void Mark(Analysis *analysis, int64_t x, int64_t y) {
    if (IsInside(*analysis, x, y))
        analysis->samples[IndexOf(analysis->bounds, x, y)] = {0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu,
                                                              0xFFFFFFFFu, 0};
}

int64_t Brightness(const PixelSample &sample) {
    return (int64_t{sample.red} + int64_t{sample.green} + int64_t{sample.blue}) / 3;
}

bool IsSelected(const PixelSample &sample) {
    return sample.selectionLevel >= 0x7FFFFFFFu && sample.coverage != 0;
}

} // namespace reference
