#include "engine/detect/FloodFill.h"

#include "diag/ErrorReport.h"
#include "engine/detect/EarlierMarks.h"

namespace {

constexpr uint32_t kSiteFillList = 1081;

// The colours of an area: each channel at most `span` above `least`.
struct AreaColors {
    uint32_t least[3], span[3];
};

AreaColors ColorsAround(const PixelSample &reference) {
    const uint32_t channels[3] = {reference.red, reference.green, reference.blue};
    AreaColors colors;
    for (int i = 0; i < 3; ++i) {
        colors.least[i] = channels[i] - (channels[i] >> 3);
        colors.span[i] = 2 * (channels[i] >> 3);
    }
    return colors;
}

bool BelongsToArea(const PixelSample &p, const AreaColors &colors) {
    // What lies below the least value wraps to a large one.
    return p.selectionLevel != 0 && p.red - colors.least[0] <= colors.span[0] &&
           p.green - colors.least[1] <= colors.span[1] && p.blue - colors.least[2] <= colors.span[2];
}

// One fill. Its pixels are the last of the log, which is also the list of those above and below which nobody
// has looked yet.
struct Fill {
    BandPicture *picture;
    AreaColors colors;

    bool Takes(int32_t x, int32_t y) const {
        return RectContains(picture->bounds, x, y) &&
               BelongsToArea(picture->rows[y - picture->bounds.top][x - picture->bounds.left], colors);
    }
};

// These return false without memory. The first marks a pixel and what belongs to the area right and left of
// it.
bool MarkRun(const Fill &fill, MarkedPixel at) {
    BandPicture *picture = fill.picture;
    bool hasMemory = MarkBandPixel(picture, at, &picture->own);
    for (int32_t x = at.x + 1; hasMemory && fill.Takes(x, at.y); ++x)
        hasMemory = MarkBandPixel(picture, {x, at.y}, &picture->own);
    for (int32_t x = at.x - 1; hasMemory && fill.Takes(x, at.y); --x)
        hasMemory = MarkBandPixel(picture, {x, at.y}, &picture->own);
    NoteRows(*picture, at.y - 1, at.y + 1);
    return hasMemory;
}

bool FillFrom(BandPicture *picture, MarkedPixel seed, const PixelSample &reference) {
    const Fill fill{picture, ColorsAround(reference)};
    size_t next = picture->own.count;
    ++picture->state;
    bool hasMemory = MarkRun(fill, seed);
    for (; hasMemory && next < picture->own.count; ++next) {
        const MarkedPixel from = picture->own.pixels[next];
        for (const int32_t y : {from.y - 1, from.y + 1})
            hasMemory = hasMemory && (!fill.Takes(from.x, y) || MarkRun(fill, {from.x, y}));
    }
    return hasMemory;
}

} // namespace

void FillFlatArea(WorkerContext *worker, int32_t x, int32_t y, const PixelSample &reference) {
    BandPicture *picture = &worker->picture;
    if (IsPixelMarked(FetchPixel(*picture, x, y)))
        return; // it spreads nowhere
    bool hasMemory = true;
    LockImage(*worker->shared);
    worker->ahead.isOutdated = picture->hasOwnRows && !TakeEarlierMarks(worker);
    if (!worker->ahead.isOutdated) {
        hasMemory = FillFrom(picture, MarkedPixel{x, y}, reference);
        PublishMarks(worker->shared);
    }
    UnlockImage(*worker->shared);
    if (hasMemory)
        return;
    worker->result = kMemFullErr;
    if (!picture->hasOwnRows) // else it is tried again, in order
        ReportError({kSiteFillList, kUserMessage, 0}, kStopIcon, kTitleExiting,
                    "Unable to allocate memory for a flood fill list.");
}
