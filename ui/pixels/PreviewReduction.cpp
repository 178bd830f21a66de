#include "ui/pixels/PreviewReduction.h"

#include "diag/BufferUsage.h"
#include "ui/pixels/PreviewGeometry.h"
#include "ui/pixels/PreviewSamples.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <type_traits>

namespace {

constexpr uint32_t kWholeWeight = 256;

// The pixels under one reduced pixel along an axis: [first, last] with the weights of the two ends; all
// between weigh kWholeWeight.
struct Span {
    int32_t first, last;
    uint32_t firstWeight, lastWeight;
};

uint32_t Weight(double share) {
    return std::max(static_cast<uint32_t>(share * kWholeWeight + 0.5), 1u);
}

// The reduced pixel must touch [low, high).
Span SpanOf(int32_t pixel, double scale, int32_t low, int32_t high) {
    const double step = kFullZoom / scale;
    const double begin = std::clamp(pixel * step, double(low), double(high));
    const double end = std::clamp((pixel + 1) * step, double(low), double(high));
    Span span;
    span.first = std::clamp(static_cast<int32_t>(std::floor(begin)), low, high - 1);
    span.last = std::clamp(static_cast<int32_t>(std::ceil(end)) - 1, span.first, high - 1);
    if (span.first == span.last) {
        span.firstWeight = span.lastWeight = kWholeWeight;
        return span;
    }
    span.firstWeight = Weight(span.first + 1 - begin);
    span.lastWeight = Weight(end - span.last);
    return span;
}

uint32_t WeightAt(const Span &span, int32_t position) {
    if (position == span.first)
        return span.firstWeight;
    return position == span.last ? span.lastWeight : kWholeWeight;
}

double TotalWeight(const Span &span) {
    if (span.first == span.last)
        return span.firstWeight;
    return double(span.firstWeight) + span.lastWeight + double(kWholeWeight) * (span.last - span.first - 1);
}

// Whole samples are summed as integers: 32768 × 256 × 334 rows, at the smallest zoom, is below 2^32.
template <typename Sample> using SumOf = std::conditional_t<std::is_same_v<Sample, float>, float, uint32_t>;

inline uint32_t Summand(uint8_t sample) {
    return sample;
}
inline uint32_t Summand(uint16_t sample) {
    return std::min<uint32_t>(sample, kHost16Full);
}
inline float Summand(float sample) {
    return sample > 0.0f ? std::min(sample, 1.0f) : 0.0f; // not a number counts as 0
}

template <typename Sample> constexpr double kFullSample = 1.0;
template <> constexpr double kFullSample<uint8_t> = 255.0;
template <> constexpr double kFullSample<uint16_t> = kHost16Full;

template <typename Sample>
void AddRow(const Sample *row, int32_t count, uint32_t weight, SumOf<Sample> *sums) {
    if (weight == kWholeWeight) {
        for (int32_t x = 0; x < count; ++x)
            sums[x] += Summand(row[x]) * SumOf<Sample>{kWholeWeight};
        return;
    }
    for (int32_t x = 0; x < count; ++x)
        sums[x] += Summand(row[x]) * static_cast<SumOf<Sample>>(weight);
}

template <typename Sum> double SumColumns(const Sum *sums, const Span &span) {
    if (span.first == span.last)
        return double(sums[span.first]) * span.firstWeight;
    double whole = 0.0;
    for (int32_t x = span.first + 1; x < span.last; ++x)
        whole += sums[x];
    return whole * kWholeWeight + double(sums[span.first]) * span.firstWeight +
           double(sums[span.last]) * span.lastWeight;
}

// The work of one call: the reduced area, and for its columns the spans, counted from the first image column.
struct Reduction {
    const ImageBuffer &image;
    const std::atomic<uint8_t> &cancel;
    PixelStore *store;
    IntRect area;        // reduced pixels that touch the image
    int32_t firstColumn; // document
    int32_t columns;
    Span *spans;
};

// `sums` holds the columns of each colour plane.
template <typename Sample> void ReduceRow(const Reduction &job, int32_t y, SumOf<Sample> *sums) {
    const ImageBuffer &image = job.image;
    const Span rows = SpanOf(y, job.store->scale, image.bounds.top, image.bounds.bottom);
    std::fill_n(sums, static_cast<size_t>(job.columns) * static_cast<size_t>(image.colorPlanes),
                SumOf<Sample>{0});
    for (int32_t plane = 0; plane < image.colorPlanes; ++plane)
        for (int32_t row = rows.first; row <= rows.last; ++row)
            AddRow(PlaneRow<Sample>(image, plane, row) + (job.firstColumn - image.bounds.left), job.columns,
                   WeightAt(rows, row), sums + static_cast<size_t>(plane) * static_cast<size_t>(job.columns));
    const int32_t width = job.store->bounds.right - job.store->bounds.left;
    uint32_t *out = job.store->pixels + int64_t{y - job.store->bounds.top} * width +
                    (job.area.left - job.store->bounds.left);
    const auto planeSums = [&](int32_t plane) {
        return sums + static_cast<size_t>(plane) * static_cast<size_t>(job.columns);
    };
    for (int32_t i = 0; i < job.area.right - job.area.left; ++i) {
        const Span &span = job.spans[i];
        const double scale = 255.0 / (kFullSample<Sample> * TotalWeight(rows) * TotalWeight(span));
        const auto mean = [&](int32_t plane) {
            return static_cast<uint32_t>(SumColumns(planeSums(plane), span) * scale + 0.5);
        };
        const uint32_t first = mean(0);
        out[i] =
            image.colorPlanes == 1 ? ScreenPixel(first, first, first) : ScreenPixel(first, mean(1), mean(2));
    }
}

template <typename Sample> bool ReduceRows(const Reduction &job) {
    const size_t bytes =
        static_cast<size_t>(job.columns) * static_cast<size_t>(job.image.colorPlanes) * sizeof(SumOf<Sample>);
    auto *sums = static_cast<SumOf<Sample> *>(CountedAlloc(bytes));
    bool isDone = sums != nullptr;
    for (int32_t y = job.area.top; isDone && y < job.area.bottom; ++y) {
        ReduceRow<Sample>(job, y, sums);
        isDone = job.cancel.load(std::memory_order_relaxed) == 0;
    }
    CountedFree(sums, bytes);
    return isDone;
}

void MakeSpans(Reduction *job) {
    const int32_t count = job->area.right - job->area.left;
    for (int32_t i = 0; i < count; ++i)
        job->spans[i] =
            SpanOf(job->area.left + i, job->store->scale, job->image.bounds.left, job->image.bounds.right);
    job->firstColumn = job->spans[0].first;
    job->columns = job->spans[count - 1].last + 1 - job->firstColumn;
    for (int32_t i = 0; i < count; ++i) {
        job->spans[i].first -= job->firstColumn;
        job->spans[i].last -= job->firstColumn;
    }
}

} // namespace

bool ReduceImage(const ImageBuffer &image, const std::atomic<uint8_t> &cancel, PixelStore *store) {
    Reduction job{image, cancel, store, {}, 0, 0, nullptr};
    job.area = IntersectRects(store->bounds, ScaleRect(image.bounds, store->scale));
    if (IsEmptyRect(job.area))
        return true;
    const size_t bytes = static_cast<size_t>(job.area.right - job.area.left) * sizeof(Span);
    job.spans = static_cast<Span *>(CountedAlloc(bytes));
    if (!job.spans)
        return false;
    MakeSpans(&job);
    bool isDone;
    if (image.bytesPerSample == 1)
        isDone = ReduceRows<uint8_t>(job);
    else if (image.bytesPerSample == 2)
        isDone = ReduceRows<uint16_t>(job);
    else
        isDone = ReduceRows<float>(job);
    CountedFree(job.spans, bytes);
    return isDone;
}
