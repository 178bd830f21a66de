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

// One fill. The list holds its runs, which is also the list of those above and below which nobody has looked
// yet. Owner of the list: FillFlatArea.
struct Fill {
    BandPicture *picture;
    AreaColors colors;
    MarkLog list;

    const PixelSample *Row(int32_t y) const {
        return picture->rows[y - picture->bounds.top] - picture->bounds.left;
    }
};

// These return false without memory. The first marks the pixel (x, y) and what belongs to the area right and
// left of it; *end becomes the end of that.
bool MarkAround(Fill *fill, int32_t x, int32_t y, int32_t *end) {
    const PixelSample *row = fill->Row(y);
    MarkedRun run{y, x, x + 1};
    while (run.right < fill->picture->bounds.right && BelongsToArea(row[run.right], fill->colors))
        ++run.right;
    while (run.left > fill->picture->bounds.left && BelongsToArea(row[run.left - 1], fill->colors))
        --run.left;
    NoteRows(*fill->picture, y - 1, y + 1);
    *end = run.right;
    return MarkRun(fill->picture, run) && AppendRuns(&run, 1, &fill->list);
}

// Marks what of the area touches the run from above or below, in the row y.
bool MarkBeside(Fill *fill, const MarkedRun &run, int32_t y) {
    if (y < fill->picture->bounds.top || y >= fill->picture->bounds.bottom)
        return true;
    for (int32_t x = run.left; x < run.right; ++x)
        if (BelongsToArea(fill->Row(y)[x], fill->colors) && !MarkAround(fill, x, y, &x))
            return false;
    return true;
}

bool FillFrom(Fill *fill, int32_t x, int32_t y) {
    bool hasMemory = MarkAround(fill, x, y, &x);
    for (size_t next = 0; hasMemory && next < fill->list.count; ++next) {
        const MarkedRun run = fill->list.runs[next];
        hasMemory = MarkBeside(fill, run, run.y - 1) && MarkBeside(fill, run, run.y + 1);
    }
    return hasMemory;
}

} // namespace

void FillFlatArea(WorkerContext *worker, int32_t x, int32_t y, const PixelSample &reference) {
    BandPicture *picture = &worker->picture;
    if (IsPixelMarked(FetchPixel(*picture, x, y)))
        return; // it spreads nowhere
    if (picture->hasOwnRows && !KeepUpWithEarlierBands(worker))
        return;
    LockImage(*worker->shared);
    Fill fill{picture, ColorsAround(reference), MarkLog{}};
    ++picture->state;
    const bool hasMemory =
        FillFrom(&fill, x, y) && AppendRuns(fill.list.runs, fill.list.count, &picture->own);
    PublishMarks(worker->shared);
    UnlockImage(*worker->shared);
    FreeMarkLog(&fill.list);
    if (hasMemory)
        return;
    worker->result = kMemFullErr;
    if (!picture->hasOwnRows) // else it is tried again, in order
        ReportError({kSiteFillList, kUserMessage, 0}, kStopIcon, kTitleExiting,
                    "Unable to allocate memory for a flood fill list.");
}
