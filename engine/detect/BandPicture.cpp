#include "engine/detect/BandPicture.h"

#include "diag/BufferUsage.h"
#include "engine/image/AnalysisImage.h"

namespace {

constexpr size_t kLogGrowth = 4096; // runs, at least

size_t Width(const BandPicture &picture) {
    return static_cast<size_t>(picture.bounds.right - picture.bounds.left);
}

size_t Height(const BandPicture &picture) {
    return static_cast<size_t>(picture.bounds.bottom - picture.bounds.top);
}

PixelSample *SharedRow(const BandPicture &picture, size_t row) {
    return picture.shared + row * Width(picture);
}

size_t PictureBytes(const BandPicture &picture) {
    return Width(picture) * Height(picture) * sizeof(PixelSample);
}

// Room for all rows is asked for at once: what no row is copied into, the system never gives.
bool MakeRowOwn(size_t row, BandPicture *picture) {
    if (!picture->ownSamples)
        picture->ownSamples = static_cast<PixelSample *>(CountedAlloc(PictureBytes(*picture)));
    if (!picture->ownSamples)
        return false;
    PixelSample *own = picture->ownSamples + row * Width(*picture);
    std::copy_n(SharedRow(*picture, row), Width(*picture), own);
    picture->rows[row] = own;
    return true;
}

void ShowSharedRows(BandPicture *picture) {
    for (size_t row = 0; row < Height(*picture); ++row)
        picture->rows[row] = SharedRow(*picture, row);
    CountedFree(picture->ownSamples, PictureBytes(*picture));
    picture->ownSamples = nullptr;
}

} // namespace

bool AppendRuns(const MarkedRun *runs, size_t count, MarkLog *log) {
    const size_t capacity = log->allocatedBytes / sizeof(MarkedRun);
    if (count > capacity - log->count) {
        const size_t newBytes = (capacity + std::max(count, kLogGrowth)) * sizeof(MarkedRun);
        void *grown = CountedRealloc(log->runs, log->allocatedBytes, newBytes);
        if (!grown)
            return false;
        log->runs = static_cast<MarkedRun *>(grown);
        log->allocatedBytes = newBytes;
    }
    std::copy_n(runs, count, log->runs + log->count);
    log->count += count;
    return true;
}

void FreeMarkLog(MarkLog *log) {
    CountedFree(log->runs, log->allocatedBytes);
    *log = MarkLog{};
}

static size_t RowTableSize(const BandPicture &picture) {
    return Height(picture) * sizeof(PixelSample *); // NOLINT(bugprone-sizeof-expression): the rows' addresses
}

bool AttachBandPicture(const AnalysisImage &image, BandPicture *picture) {
    *picture = BandPicture{};
    picture->bounds = image.bounds;
    picture->maxBrightness = image.maxBrightness;
    picture->shared = image.samples;
    picture->state = 1;
    picture->lookedAt = kNoRows;
    picture->rows = static_cast<PixelSample **>(CountedAlloc(RowTableSize(*picture)));
    if (!picture->rows)
        return false;
    ShowSharedRows(picture);
    return true;
}

void FreeBandPicture(BandPicture *picture) {
    if (picture->rows)
        ShowSharedRows(picture);
    CountedFree(picture->rows, RowTableSize(*picture));
    FreeMarkLog(&picture->own);
    *picture = BandPicture{};
}

void ShowSharedPicture(BandPicture *picture) {
    ShowSharedRows(picture);
    picture->hasOwnRows = false;
    ++picture->state;
    picture->own.count = 0;
    picture->lookedAt = kNoRows;
}

bool MarkRun(BandPicture *picture, const MarkedRun &run) {
    const auto row = static_cast<size_t>(run.y - picture->bounds.top);
    if (picture->hasOwnRows && picture->rows[row] == SharedRow(*picture, row) && !MakeRowOwn(row, picture))
        return false;
    PixelSample *samples = picture->rows[row] - picture->bounds.left;
    std::fill(samples + run.left, samples + run.right, kMarkedSample);
    return true;
}

void RestoreRun(BandPicture *picture, const MarkedRun &run) {
    const auto row = static_cast<size_t>(run.y - picture->bounds.top);
    const PixelSample *shared = SharedRow(*picture, row) - picture->bounds.left;
    if (picture->rows[row] != SharedRow(*picture, row)) // else it was never marked
        std::copy(shared + run.left, shared + run.right,
                  picture->rows[row] - picture->bounds.left + run.left);
}
