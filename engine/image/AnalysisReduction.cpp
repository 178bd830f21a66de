// Each analysis pixel is the average of a window of `scale` document pixels a side, centred on the document
// pixel that the merge of the light source tables will give back for it; so a star sits on its light. Windows
// overlap or leave gaps of a fraction of a pixel, as that rounding wills.
//
// What the average is, down to the last bit: the sums of weight and of weight × value over the window, row by
// row, left to right, in double; their quotient plus a half, truncated. It is found in two ways. The fast one
// adds whole rows into columns first and the columns of a window then. It ends within a known distance of the
// other; only where a whole number lies within that distance is the sum done again in its own order.
#include "engine/image/AnalysisReduction.h"

#include "diag/BufferUsage.h"
#include "engine/image/BandWorkers.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr double kFullValue = 4294967295.0;
constexpr int64_t kFullInteger = 4294967295;
constexpr double kWidenedByte = 0x01010101; // what a byte of a mask is multiplied by
constexpr double kWorkingByte = 65793;      // the same for a colour
// Each operation rounds by at most 2^-53, relatively, and nothing is ever subtracted. Both ways together take
// fewer than six a pixel of the window, and kSpareRoundings stands for those that come once; the rest of this
// is to spare.
constexpr double kRoundingOfPixel = 1.0 / (int64_t{1} << 49);
constexpr int32_t kSpareRoundings = 16;
constexpr int32_t kBandRows = 16; // of the result, for one worker at a time
// Bytes are added up in sixteen bits as long as that holds them, in groups of rows.
constexpr int32_t kRowsInGroup = 4, kGroupsInSums = 64;
static_assert(kRowsInGroup * kGroupsInSums * 255 <= 65535);

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
    if (!(w.begin < w.end)) { // beside the image: its nearest pixel
        w.begin = center < imageBegin ? imageBegin : imageEnd - 1;
        w.end = w.begin + 1;
    }
    w.first = static_cast<int32_t>(std::floor(w.begin));
    w.count = static_cast<int32_t>(std::ceil(w.end)) - w.first;
    return w;
}

// How much of document pixel `pixel` lies inside the window, 0..1.
double CoverageOf(const AxisWindow &w, int32_t pixel) {
    return std::min<double>(w.end, pixel + 1.0) - std::max<double>(w.begin, pixel);
}

// One of the five values of a pixel sample, as it lies in the source.
struct Layer {
    const uint8_t *samples; // row by row; null: full everywhere
    int32_t bytesPerSample;
    bool isWidened;  // from a working value to 32 bits
    double byteUnit; // bytes only: their value is the byte times this
};

Layer ColorLayer(const ImageBuffer &source, int32_t plane) {
    return Layer{source.planes[plane], source.bytesPerSample, false, kWorkingByte};
}

Layer CoverageLayer(const ImageBuffer &source) {
    if (!source.transparencyPlanes)
        return Layer{};
    return Layer{source.planes[source.colorPlanes], source.bytesPerSample, true, kWidenedByte};
}

Layer SelectionLayer(const ImageBuffer &source) {
    return Layer{source.mask, 1, true, kWidenedByte};
}

uint32_t WidenWorking(uint32_t working) {
    return (working << 8) | (working >> 16);
}

// Hands the value of each of `count` samples, from number `start` on, to `put`.
template <typename Sample, typename Convert, typename Put>
void ForEachSample(const Layer &layer, int64_t start, int32_t count, Convert convert, Put put) {
    const uint8_t *from = layer.samples + start * static_cast<int64_t>(sizeof(Sample));
    for (int32_t i = 0; i < count; ++i, from += sizeof(Sample)) {
        Sample sample;
        memcpy(&sample, from, sizeof sample);
        const uint32_t working = convert(sample);
        put(i, layer.isWidened ? WidenWorking(working) : working);
    }
}

template <typename Put> void ForEachValue(const Layer &layer, int64_t start, int32_t count, Put put) {
    if (layer.bytesPerSample == 1)
        ForEachSample<uint8_t>(layer, start, count, WorkingFrom8, put);
    else if (layer.bytesPerSample == 2)
        ForEachSample<uint16_t>(layer, start, count, WorkingFrom16, put);
    else
        ForEachSample<float>(layer, start, count, WorkingFromFloat, put);
}

// Everything a reduction needs besides its output; one owner, freed by FreeScratch. Each worker has sums of
// its own, one worker's behind the other's.
struct Scratch {
    int32_t workers;
    int32_t width;         // of the source
    int32_t analysisWidth; // of the result
    size_t weightCount;    // of all column windows
    AxisWindow *windows;   // one for each analysis column
    double *weights;       // of the columns' pixels, window after window
    double *perWeight;     // one for each analysis column: 1 / the sum of its weights
    uint16_t *byteSums;    // one for each column of the source: some of its whole pixels
    double *columns;       // the same: all its pixels in the row of windows
};

size_t SumsOfWorkers(const Scratch &s) {
    return static_cast<size_t>(s.workers) * static_cast<size_t>(s.width);
}

void FreeScratch(Scratch *s) {
    CountedFree(s->windows, s->analysisWidth * sizeof *s->windows);
    CountedFree(s->weights, s->weightCount * sizeof *s->weights);
    CountedFree(s->perWeight, s->analysisWidth * sizeof *s->perWeight);
    CountedFree(s->byteSums, SumsOfWorkers(*s) * sizeof *s->byteSums);
    CountedFree(s->columns, SumsOfWorkers(*s) * sizeof *s->columns);
    *s = Scratch{};
}

void FillWeights(Scratch *s) {
    double *weight = s->weights;
    for (int32_t i = 0; i < s->analysisWidth; ++i) {
        double sum = 0.0;
        for (int32_t k = 0; k < s->windows[i].count; ++k, ++weight) {
            *weight = CoverageOf(s->windows[i], s->windows[i].first + k);
            sum += *weight;
        }
        s->perWeight[i] = 1.0 / sum;
    }
}

bool PrepareColumns(const ImageBuffer &source, const AnalysisImage &image, Scratch *s) {
    s->windows = static_cast<AxisWindow *>(CountedAlloc(s->analysisWidth * sizeof *s->windows));
    s->perWeight = static_cast<double *>(CountedAlloc(s->analysisWidth * sizeof *s->perWeight));
    if (!s->windows || !s->perWeight)
        return false;
    for (int32_t i = 0; i < s->analysisWidth; ++i) {
        s->windows[i] = WindowAt(image.bounds.left + i, image.scale, source.bounds.left, source.bounds.right);
        s->weightCount += static_cast<size_t>(s->windows[i].count);
    }
    s->weights = static_cast<double *>(CountedAlloc(s->weightCount * sizeof *s->weights));
    if (s->weights)
        FillWeights(s);
    return s->weights != nullptr;
}

bool AllocateScratch(const ImageBuffer &source, const AnalysisImage &image, int32_t workers, Scratch *s) {
    *s = Scratch{};
    s->workers = workers;
    s->width = source.width;
    s->analysisWidth = image.bounds.right - image.bounds.left;
    s->byteSums = static_cast<uint16_t *>(CountedAlloc(SumsOfWorkers(*s) * sizeof *s->byteSums));
    s->columns = static_cast<double *>(CountedAlloc(SumsOfWorkers(*s) * sizeof *s->columns));
    return s->byteSums && s->columns && PrepareColumns(source, image, s);
}

// What one worker uses: the sums are its own, the rest is shared. Not to be freed.
Scratch ScratchOfWorker(const Scratch &s, int32_t worker) {
    Scratch own = s;
    own.byteSums += static_cast<size_t>(worker) * static_cast<size_t>(s.width);
    own.columns += static_cast<size_t>(worker) * static_cast<size_t>(s.width);
    return own;
}

void AddWeightedBytes(const uint8_t *row, int32_t width, double weight, double *columns) {
    for (int32_t x = 0; x < width; ++x)
        columns[x] += weight * row[x];
}

void AddRow(const uint8_t *row, int32_t width, uint16_t *sums) {
    for (int32_t x = 0; x < width; ++x)
        sums[x] = static_cast<uint16_t>(sums[x] + row[x]);
}

void AddGroupOfRows(const uint8_t *rows, int32_t width, uint16_t *sums) {
    const uint8_t *second = rows + width, *third = second + width, *fourth = third + width;
    for (int32_t x = 0; x < width; ++x)
        sums[x] = static_cast<uint16_t>(sums[x] + rows[x] + second[x] + third[x] + fourth[x]);
}

void AddSums(const uint16_t *sums, int32_t width, double *columns) {
    for (int32_t x = 0; x < width; ++x)
        columns[x] += sums[x];
}

// Adds `count` whole rows, one behind the other.
void AddWholeRows(const uint8_t *rows, int32_t count, const Scratch &s) {
    while (count > 0) {
        std::fill_n(s.byteSums, s.width, uint16_t{0});
        const int32_t now = std::min(count, kRowsInGroup * kGroupsInSums);
        int32_t y = 0;
        for (; y + kRowsInGroup <= now; y += kRowsInGroup)
            AddGroupOfRows(rows + int64_t{y} * s.width, s.width, s.byteSums);
        for (; y < now; ++y)
            AddRow(rows + int64_t{y} * s.width, s.width, s.byteSums);
        AddSums(s.byteSums, s.width, s.columns);
        rows += int64_t{now} * s.width;
        count -= now;
    }
}

// The sums of a layer's columns over a window of rows, in bytes times their weights. Only the first and the
// last row can lie in the window in part.
void SumByteColumns(const Layer &layer, const ImageBuffer &source, const AxisWindow &rows, const Scratch &s) {
    std::fill_n(s.columns, s.width, 0.0);
    int32_t from = rows.first, to = rows.first + rows.count;
    const auto rowAt = [&](int32_t y) { return layer.samples + int64_t{y - source.bounds.top} * s.width; };
    if (CoverageOf(rows, from) != 1.0) {
        AddWeightedBytes(rowAt(from), s.width, CoverageOf(rows, from), s.columns);
        ++from;
    }
    if (from < to && CoverageOf(rows, to - 1) != 1.0) {
        --to;
        AddWeightedBytes(rowAt(to), s.width, CoverageOf(rows, to), s.columns);
    }
    if (from < to)
        AddWholeRows(rowAt(from), to - from, s);
}

// The same for deeper samples, in values.
void SumDeepColumns(const Layer &layer, const ImageBuffer &source, const AxisWindow &rows, const Scratch &s) {
    std::fill_n(s.columns, s.width, 0.0);
    for (int32_t y = rows.first; y < rows.first + rows.count; ++y) {
        const double weight = CoverageOf(rows, y);
        double *columns = s.columns;
        ForEachValue(layer, int64_t{y - source.bounds.top} * s.width, s.width,
                     [columns, weight](int32_t x, uint32_t value) { columns[x] += weight * value; });
    }
}

// A window's average in its own order of sums.
uint32_t AverageInOrder(const Layer &layer, const ImageBuffer &source, const AxisWindow &rows,
                        const AxisWindow &columns, const double *columnWeights) {
    double sum = 0.0, weight = 0.0;
    for (int32_t y = rows.first; y < rows.first + rows.count; ++y) {
        const double rowWeight = CoverageOf(rows, y);
        const int64_t start =
            int64_t{y - source.bounds.top} * source.width + (columns.first - source.bounds.left);
        ForEachValue(layer, start, columns.count, [&](int32_t k, uint32_t value) {
            const double w = rowWeight * columnWeights[k];
            sum += w * value;
            weight += w;
        });
    }
    return static_cast<uint32_t>(std::min(sum / weight + 0.5, kFullValue));
}

// The average from the sums of a window's columns; false when it lies too near to a whole number to tell.
bool AverageOfColumns(const double *columns, const double *columnWeights, int32_t count, double perWeight,
                      double roundings, uint32_t *average) {
    double sum = 0.0;
    for (int32_t k = 0; k < count; ++k)
        sum += columnWeights[k] * columns[k];
    const double quotient = sum * perWeight + 0.5;
    const double doubt = quotient * roundings * kRoundingOfPixel;
    const auto low = static_cast<int64_t>(quotient - doubt), high = static_cast<int64_t>(quotient + doubt);
    *average = static_cast<uint32_t>(std::min(low, kFullInteger));
    return low == high || low >= kFullInteger;
}

// One value of every pixel in a row of the result.
void ReduceLayerRow(const Layer &layer, const ImageBuffer &source, const AxisWindow &rows, const Scratch &s,
                    uint32_t PixelSample::*value, PixelSample *out) {
    const bool hasBytes = layer.bytesPerSample == 1;
    if (hasBytes)
        SumByteColumns(layer, source, rows, s);
    else
        SumDeepColumns(layer, source, rows, s);
    const double unit = (hasBytes ? layer.byteUnit : 1.0) / (rows.end - rows.begin);
    const double *weights = s.weights;
    for (int32_t i = 0; i < s.analysisWidth; ++i) {
        const AxisWindow &window = s.windows[i];
        const double roundings = double{1.0} * rows.count * window.count + kSpareRoundings;
        uint32_t average;
        if (!AverageOfColumns(s.columns + (window.first - source.bounds.left), weights, window.count,
                              unit * s.perWeight[i], roundings, &average))
            average = AverageInOrder(layer, source, rows, window, weights);
        out[i].*value = average;
        weights += window.count;
    }
}

void ReduceLayerRowOrFill(const Layer &layer, const ImageBuffer &source, const AxisWindow &rows,
                          const Scratch &s, uint32_t PixelSample::*value, PixelSample *out) {
    if (layer.samples)
        ReduceLayerRow(layer, source, rows, s, value, out);
    else
        for (int32_t i = 0; i < s.analysisWidth; ++i)
            out[i].*value = 0xFFFFFFFFu;
}

// One row of the result. Returns its largest brightness.
uint32_t ReduceRow(const ImageBuffer &source, int32_t y, const Scratch &s, AnalysisImage *image) {
    const AxisWindow rows = WindowAt(y, image->scale, source.bounds.top, source.bounds.bottom);
    PixelSample *out = image->samples + int64_t{y - image->bounds.top} * s.analysisWidth;
    ReduceLayerRow(ColorLayer(source, 0), source, rows, s, &PixelSample::red, out);
    if (source.colorPlanes == 1) {
        for (int32_t i = 0; i < s.analysisWidth; ++i)
            out[i].green = out[i].blue = out[i].red;
    } else {
        ReduceLayerRow(ColorLayer(source, 1), source, rows, s, &PixelSample::green, out);
        ReduceLayerRow(ColorLayer(source, 2), source, rows, s, &PixelSample::blue, out);
    }
    ReduceLayerRowOrFill(CoverageLayer(source), source, rows, s, &PixelSample::coverage, out);
    ReduceLayerRowOrFill(SelectionLayer(source), source, rows, s, &PixelSample::selectionLevel, out);
    return LargestBrightness(out, s.analysisWidth);
}

struct ReductionJob {
    const ImageBuffer &source;
    const std::atomic<uint8_t> &cancel;
    AnalysisImage *image;
    Scratch scratch;
    std::atomic<uint32_t> brightest;
};

void KeepLargest(uint32_t value, std::atomic<uint32_t> *largest) {
    uint32_t before = largest->load(std::memory_order_relaxed);
    while (before < value && !largest->compare_exchange_weak(before, value, std::memory_order_relaxed))
        ;
}

void ReduceBand(void *data, int32_t band, int32_t worker) {
    ReductionJob &job = *static_cast<ReductionJob *>(data);
    const Scratch scratch = ScratchOfWorker(job.scratch, worker);
    const int32_t top = job.image->bounds.top + band * kBandRows;
    const int32_t bottom = std::min(top + kBandRows, job.image->bounds.bottom);
    uint32_t brightest = 0;
    for (int32_t y = top; y < bottom && !job.cancel.load(std::memory_order_relaxed); ++y)
        brightest = std::max(brightest, ReduceRow(job.source, y, scratch, job.image));
    KeepLargest(brightest, &job.brightest);
}

// Reads one value of every pixel in a row of the source.
void ReadLayerRow(const Layer &layer, int64_t start, int32_t width, uint32_t PixelSample::*value,
                  PixelSample *row) {
    if (layer.samples)
        ForEachValue(layer, start, width, [=](int32_t i, uint32_t v) { row[i].*value = v; });
    else
        for (int32_t i = 0; i < width; ++i)
            row[i].*value = 0xFFFFFFFFu;
}

} // namespace

uint32_t LargestBrightness(const PixelSample *row, int32_t width) {
    uint64_t largest = 0; // sum of channels
    for (int32_t x = 0; x < width; ++x)
        largest = std::max(largest, uint64_t{row[x].red} + row[x].green + row[x].blue);
    return static_cast<uint32_t>(largest / 3);
}

void ReadSampleRow(const ImageBuffer &buffer, int32_t y, PixelSample *row) {
    const int64_t start = int64_t{y - buffer.bounds.top} * buffer.width;
    const int32_t lastPlane = buffer.colorPlanes - 1;
    ReadLayerRow(ColorLayer(buffer, 0), start, buffer.width, &PixelSample::red, row);
    ReadLayerRow(ColorLayer(buffer, std::min(1, lastPlane)), start, buffer.width, &PixelSample::green, row);
    ReadLayerRow(ColorLayer(buffer, lastPlane), start, buffer.width, &PixelSample::blue, row);
    ReadLayerRow(CoverageLayer(buffer), start, buffer.width, &PixelSample::coverage, row);
    ReadLayerRow(SelectionLayer(buffer), start, buffer.width, &PixelSample::selectionLevel, row);
}

HostResult ReduceToAnalysisImage(const ImageBuffer &source, const std::atomic<uint8_t> &cancel,
                                 AnalysisImage *image, const WorkerThreads &threads) {
    ReductionJob job{source, cancel, image, Scratch{}, {0}};
    const int32_t workers = std::clamp(threads.count, 1, kMaxBandWorkers);
    const int32_t bands = (image->bounds.bottom - image->bounds.top + kBandRows - 1) / kBandRows;
    const bool isReady = AllocateScratch(source, *image, workers, &job.scratch);
    if (isReady)
        ForEachBand(bands, {workers, threads.start, threads.join}, ReduceBand, &job);
    FreeScratch(&job.scratch);
    image->maxBrightness = job.brightest;
    if (!isReady)
        return kParamErr;
    return cancel.load(std::memory_order_relaxed) ? kUserCanceledErr : kNoError;
}
