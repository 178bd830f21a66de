// Each analysis pixel is the average of a window of `scale` document pixels a side, centred on the document
// pixel that the merge of the light source tables will give back for it; so a star sits on its light. Windows
// overlap or leave gaps of a fraction of a pixel, as that rounding wills. Sums run row by row, left to right,
// in double.
#include "engine/AnalysisReduction.h"

#include "diag/BufferUsage.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr int kValuesPerPixel = 5; // a pixel sample's five values

// The document pixels under one analysis pixel along one axis.
struct AxisWindow {
    int32_t first, count;
    double begin, end; // clipped to the image
};

AxisWindow WindowAt(int32_t analysisPixel, double scale, int32_t imageBegin, int32_t imageEnd) {
    const double center = std::trunc(analysisPixel * scale + 0.5) + 0.5;
    AxisWindow w;
    w.begin = std::max<double>(center - scale / 2, imageBegin);
    w.end = std::min<double>(center + scale / 2, imageEnd);
    if (!(w.begin < w.end)) {
        w.begin = imageEnd - 1;
        w.end = imageEnd;
    }
    w.first = static_cast<int32_t>(std::floor(w.begin));
    w.count = static_cast<int32_t>(std::ceil(w.end)) - w.first;
    return w;
}

// How much of document pixel `pixel` lies inside the window, 0..1.
double CoverageOf(const AxisWindow &w, int32_t pixel) {
    return std::min<double>(w.end, pixel + 1.0) - std::max<double>(w.begin, pixel);
}

struct PixelSum {
    double values[kValuesPerPixel];
    double weight;
};

// Everything a reduction needs besides its output; one owner, freed by FreeScratch.
struct Scratch {
    int32_t width;         // of the source
    int32_t analysisWidth; // of the result
    size_t weightCount;    // of all column windows
    AxisWindow *windows;   // one for each analysis column
    double *weights;       // of the columns' pixels, window after window
    PixelSample *row;      // the source row at hand
    PixelSum *sums;        // one for each analysis column
};

void FreeScratch(Scratch *s) {
    CountedFree(s->windows, s->analysisWidth * sizeof *s->windows);
    CountedFree(s->weights, s->weightCount * sizeof *s->weights);
    CountedFree(s->row, s->width * sizeof *s->row);
    CountedFree(s->sums, s->analysisWidth * sizeof *s->sums);
    *s = Scratch{};
}

bool PrepareColumns(const ImageBuffer &source, const AnalysisImage &image, Scratch *s) {
    s->windows = static_cast<AxisWindow *>(CountedAlloc(s->analysisWidth * sizeof *s->windows));
    if (!s->windows)
        return false;
    for (int32_t i = 0; i < s->analysisWidth; ++i) {
        s->windows[i] = WindowAt(image.bounds.left + i, image.scale, source.bounds.left, source.bounds.right);
        s->weightCount += static_cast<size_t>(s->windows[i].count);
    }
    s->weights = static_cast<double *>(CountedAlloc(s->weightCount * sizeof *s->weights));
    if (!s->weights)
        return false;
    double *weight = s->weights;
    for (int32_t i = 0; i < s->analysisWidth; ++i)
        for (int32_t k = 0; k < s->windows[i].count; ++k)
            *weight++ = CoverageOf(s->windows[i], s->windows[i].first + k);
    return true;
}

bool AllocateScratch(const ImageBuffer &source, const AnalysisImage &image, Scratch *s) {
    *s = Scratch{};
    s->width = source.width;
    s->analysisWidth = image.bounds.right - image.bounds.left;
    s->row = static_cast<PixelSample *>(CountedAlloc(s->width * sizeof *s->row));
    s->sums = static_cast<PixelSum *>(CountedAlloc(s->analysisWidth * sizeof *s->sums));
    return s->row && s->sums && PrepareColumns(source, image, s);
}

// Adds the row at hand to the sums of every analysis column. `rowWeight` is the row's own part of the window.
void AddRow(const Scratch &s, int32_t imageLeft, double rowWeight) {
    const double *weight = s.weights;
    for (int32_t i = 0; i < s.analysisWidth; ++i) {
        const AxisWindow &window = s.windows[i];
        const PixelSample *p = s.row + (window.first - imageLeft);
        PixelSum sum = s.sums[i];
        for (int32_t k = 0; k < window.count; ++k, ++p) {
            const double w = rowWeight * *weight++;
            sum.values[0] += w * p->red;
            sum.values[1] += w * p->green;
            sum.values[2] += w * p->blue;
            sum.values[3] += w * p->coverage;
            sum.values[4] += w * p->selectionLevel;
            sum.weight += w;
        }
        s.sums[i] = sum;
    }
}

uint32_t Average(const PixelSum &sum, int value) {
    return static_cast<uint32_t>(std::min(sum.values[value] / sum.weight + 0.5, 4294967295.0));
}

// One row of the result; false when cancelled.
bool ReduceRow(const ImageBuffer &source, int32_t y, const std::atomic<uint8_t> &cancel, const Scratch &s,
               AnalysisImage *image) {
    const AxisWindow window = WindowAt(y, image->scale, source.bounds.top, source.bounds.bottom);
    std::fill_n(s.sums, s.analysisWidth, PixelSum{});
    for (int32_t k = 0; k < window.count; ++k) {
        if (cancel.load(std::memory_order_relaxed))
            return false;
        ReadSampleRow(source, window.first + k, s.row);
        AddRow(s, source.bounds.left, CoverageOf(window, window.first + k));
    }
    PixelSample *out = image->samples + int64_t{y - image->bounds.top} * s.analysisWidth;
    for (int32_t i = 0; i < s.analysisWidth; ++i) {
        const PixelSum &sum = s.sums[i];
        out[i] =
            PixelSample{Average(sum, 0), Average(sum, 1), Average(sum, 2), Average(sum, 3), Average(sum, 4)};
    }
    return true;
}

// Reads `count` samples of a plane, of the type Sample, and hands each working value to `put`.
template <typename Sample, typename Convert, typename Put>
void ReadPlaneRow(const uint8_t *plane, int64_t start, int32_t count, Convert convert, Put put) {
    const uint8_t *from = plane + start * static_cast<int64_t>(sizeof(Sample));
    for (int32_t i = 0; i < count; ++i, from += sizeof(Sample)) {
        Sample sample;
        memcpy(&sample, from, sizeof sample);
        put(i, convert(sample));
    }
}

template <typename Put> void ReadPlaneRow(const ImageBuffer &buffer, int32_t plane, int64_t start, Put put) {
    const uint8_t *samples = buffer.planes[plane];
    if (buffer.bytesPerSample == 1)
        ReadPlaneRow<uint8_t>(samples, start, buffer.width, WorkingFrom8, put);
    else if (buffer.bytesPerSample == 2)
        ReadPlaneRow<uint16_t>(samples, start, buffer.width, WorkingFrom16, put);
    else
        ReadPlaneRow<float>(samples, start, buffer.width, WorkingFromFloat, put);
}

void ReadColors(const ImageBuffer &buffer, int64_t start, PixelSample *row) {
    if (buffer.colorPlanes == 1) {
        ReadPlaneRow(buffer, 0, start,
                     [row](int32_t i, uint32_t v) { row[i].red = row[i].green = row[i].blue = v; });
        return;
    }
    ReadPlaneRow(buffer, 0, start, [row](int32_t i, uint32_t v) { row[i].red = v; });
    ReadPlaneRow(buffer, 1, start, [row](int32_t i, uint32_t v) { row[i].green = v; });
    ReadPlaneRow(buffer, 2, start, [row](int32_t i, uint32_t v) { row[i].blue = v; });
}

} // namespace

void ReadSampleRow(const ImageBuffer &buffer, int32_t y, PixelSample *row) {
    const int64_t start = int64_t{y - buffer.bounds.top} * buffer.width;
    ReadColors(buffer, start, row);
    if (buffer.transparencyPlanes)
        ReadPlaneRow(buffer, buffer.colorPlanes, start,
                     [row](int32_t i, uint32_t v) { row[i].coverage = (v << 8) | (v >> 16); });
    else
        for (int32_t i = 0; i < buffer.width; ++i)
            row[i].coverage = 0xFFFFFFFFu;
    for (int32_t i = 0; i < buffer.width; ++i)
        row[i].selectionLevel = buffer.mask ? buffer.mask[start + i] * 0x01010101u : 0xFFFFFFFFu;
}

HostResult ReduceToAnalysisImage(const ImageBuffer &source, const std::atomic<uint8_t> &cancel,
                                 AnalysisImage *image) {
    Scratch scratch;
    HostResult result = AllocateScratch(source, *image, &scratch) ? kNoError : kParamErr;
    for (int32_t y = image->bounds.top; result == kNoError && y < image->bounds.bottom; ++y)
        if (!ReduceRow(source, y, cancel, scratch, image))
            result = kUserCanceledErr;
    FreeScratch(&scratch);
    return result;
}
