// The picture as the worker of one band sees it. Several bands are scanned at once, and a flat area that one
// of them marks may reach into the others; so each worker marks in rows of its own, which it copies from the
// shared picture when the first pixel in them is marked, and notes which rows it looked at: only a mark in
// those can make a difference to what it found. A worker that scans alone marks in the shared picture.
#pragma once

#include "engine/image/PixelSample.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

// From `first` to `last`, both included; empty when first > last.
struct RowRange {
    int32_t first, last;

    bool Contains(int32_t y) const { return y >= first && y <= last; }
    void Include(int32_t from, int32_t to) {
        first = std::min(first, from);
        last = std::max(last, to);
    }
};
constexpr RowRange kNoRows = {INT32_MAX, INT32_MIN}, kAllRows = {INT32_MIN, INT32_MAX};

// Pixels of one row, from `left` to before `right`.
struct MarkedRun {
    int32_t y, left, right;
};

// Runs in the order in which they were marked, all inside the bounds. Owner: the record it is in.
struct MarkLog {
    MarkedRun *runs;
    size_t count, allocatedBytes;
};

bool AppendRuns(const MarkedRun *runs, size_t count, MarkLog *log); // false without memory
void FreeMarkLog(MarkLog *log);

// Owner of `rows`, `ownSamples` and the log; FreeBandPicture releases them.
struct BandPicture {
    IntRect bounds;
    uint32_t maxBrightness;
    PixelSample *shared;     // the shared picture's samples
    PixelSample **rows;      // one for each row: the shared picture's, or its own
    PixelSample *ownSamples; // room for its own rows; null until there is one
    bool hasOwnRows;         // marks go into rows of its own
    uint32_t state;          // changes whenever pixels are marked or taken back; never 0
    MarkLog own;             // what this worker marked; no pixel twice
    mutable RowRange lookedAt;
};

// Shows the shared picture. False without the memory for it; FreeBandPicture must follow in any case.
bool AttachBandPicture(const AnalysisImage &image, BandPicture *picture);
void FreeBandPicture(BandPicture *picture);

// Forgets its own marks and what was looked at, and marks in the shared picture from here on.
void ShowSharedPicture(BandPicture *picture);

// Takes the pixels of a run out of detection, whether they were or not. False without the memory for it.
bool MarkRun(BandPicture *picture, const MarkedRun &run);
// For a picture with rows of its own: shows the pixels of a run as they are in the shared picture.
void RestoreRun(BandPicture *picture, const MarkedRun &run);

inline PixelSample FetchPixel(const BandPicture &picture, int32_t x, int32_t y) {
    if (!RectContains(picture.bounds, x, y))
        return PixelSample{0, 0, 0, 0, 0};
    return picture.rows[y - picture.bounds.top][x - picture.bounds.left];
}

// To be called for all rows that a result depends on. They may lie outside the bounds.
inline void NoteRows(const BandPicture &picture, int32_t first, int32_t last) {
    picture.lookedAt.Include(first, last);
}
