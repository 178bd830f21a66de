#include "engine/detect/BandPicture.h"

#include "diag/BufferUsage.h"
#include "engine/image/AnalysisImage.h"

#include <cstring>

namespace {

constexpr size_t kLogGrowth = 32768; // pixels

size_t Width(const BandPicture &picture) {
    return static_cast<size_t>(picture.bounds.right - picture.bounds.left);
}

size_t Height(const BandPicture &picture) {
    return static_cast<size_t>(picture.bounds.bottom - picture.bounds.top);
}

PixelSample *SharedRow(const BandPicture &picture, size_t row) {
    return picture.shared + row * Width(picture);
}

bool AppendToLog(MarkedPixel pixel, MarkLog *log) {
    if (log->count == log->allocatedBytes / sizeof(MarkedPixel)) {
        const size_t newBytes = log->allocatedBytes + kLogGrowth * sizeof(MarkedPixel);
        void *grown = CountedRealloc(log->pixels, log->allocatedBytes, newBytes);
        if (!grown)
            return false;
        log->pixels = static_cast<MarkedPixel *>(grown);
        log->allocatedBytes = newBytes;
    }
    log->pixels[log->count++] = pixel;
    return true;
}

void FreeLog(MarkLog *log) {
    CountedFree(log->pixels, log->allocatedBytes);
    *log = MarkLog{};
}

bool MakeRowOwn(size_t row, BandPicture *picture) {
    const size_t bytes = Width(*picture) * sizeof(PixelSample);
    auto *own = static_cast<PixelSample *>(CountedAlloc(bytes));
    if (!own)
        return false;
    memcpy(own, SharedRow(*picture, row), bytes);
    picture->rows[row] = own;
    return true;
}

void ShowSharedRows(BandPicture *picture) {
    for (size_t row = 0; row < Height(*picture); ++row) {
        if (picture->rows[row] != SharedRow(*picture, row))
            CountedFree(picture->rows[row], Width(*picture) * sizeof(PixelSample));
        picture->rows[row] = SharedRow(*picture, row);
    }
}

} // namespace

bool AttachBandPicture(const AnalysisImage &image, BandPicture *picture) {
    *picture = BandPicture{};
    picture->bounds = image.bounds;
    picture->maxBrightness = image.maxBrightness;
    picture->shared = image.samples;
    picture->state = 1;
    picture->lookedAt = kNoRows;
    picture->rows = static_cast<PixelSample **>(CountedAlloc(Height(*picture) * sizeof(PixelSample *)));
    if (!picture->rows)
        return false;
    for (size_t row = 0; row < Height(*picture); ++row)
        picture->rows[row] = SharedRow(*picture, row);
    return true;
}

void FreeBandPicture(BandPicture *picture) {
    if (picture->rows)
        ShowSharedRows(picture);
    CountedFree(picture->rows, Height(*picture) * sizeof(PixelSample *));
    FreeLog(&picture->own);
    FreeLog(&picture->taken);
    *picture = BandPicture{};
}

void ShowSharedPicture(BandPicture *picture) {
    ShowSharedRows(picture);
    picture->hasOwnRows = false;
    ++picture->state;
    picture->own.count = 0;
    picture->taken.count = 0;
    picture->lookedAt = kNoRows;
}

void TakeBackMarks(BandPicture *picture, MarkLog *log) {
    for (; log->count > 0; --log->count) {
        const MarkedPixel at = log->pixels[log->count - 1];
        const auto row = static_cast<size_t>(at.y - picture->bounds.top);
        const int32_t column = at.x - picture->bounds.left;
        picture->rows[row][column] = SharedRow(*picture, row)[column];
    }
    ++picture->state;
}

bool MarkBandPixel(BandPicture *picture, MarkedPixel at, MarkLog *log) {
    const auto row = static_cast<size_t>(at.y - picture->bounds.top);
    if (picture->hasOwnRows && picture->rows[row] == SharedRow(*picture, row) && !MakeRowOwn(row, picture))
        return false;
    if (!AppendToLog(at, log))
        return false;
    picture->rows[row][at.x - picture->bounds.left] = kMarkedSample;
    return true;
}
