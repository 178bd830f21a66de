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
};
constexpr RowRange kNoRows = {INT32_MAX, INT32_MIN};

struct MarkedPixel {
    int32_t x, y;
};

// Pixels in the order in which they were marked, none of them twice. Owner: the picture.
struct MarkLog {
    MarkedPixel *pixels;
    size_t count, allocatedBytes;
};

// Owner of `rows`, the rows that are its own, and the logs; FreeBandPicture releases them.
struct BandPicture {
    IntRect bounds;
    uint32_t maxBrightness;
    PixelSample *shared; // the shared picture's samples
    PixelSample **rows;  // one for each row: the shared picture's, or its own
    bool hasOwnRows;     // marks go into rows of its own
    uint32_t state;      // changes whenever pixels are marked or taken back; never 0
    MarkLog own;         // what this worker marked
    MarkLog taken;       // what it took over from earlier bands; only with own rows
    mutable RowRange lookedAt;
};

// Shows the shared picture. False without the memory for it; FreeBandPicture must follow in any case.
bool AttachBandPicture(const AnalysisImage &image, BandPicture *picture);
void FreeBandPicture(BandPicture *picture);

// Forgets its own marks and what was looked at, and marks in the shared picture from here on.
void ShowSharedPicture(BandPicture *picture);

// For a picture with rows of its own: takes back what one of its logs holds, and empties the log.
void TakeBackMarks(BandPicture *picture, MarkLog *log);

// Takes a pixel inside the bounds out of detection and enters it in the log. False without the memory for it.
bool MarkBandPixel(BandPicture *picture, MarkedPixel at, MarkLog *log);

inline PixelSample FetchPixel(const BandPicture &picture, int32_t x, int32_t y) {
    if (!RectContains(picture.bounds, x, y))
        return PixelSample{0, 0, 0, 0, 0};
    return picture.rows[y - picture.bounds.top][x - picture.bounds.left];
}

// To be called for all rows that a result depends on. They may lie outside the bounds.
inline void NoteRows(const BandPicture &picture, int32_t first, int32_t last) {
    picture.lookedAt.first = std::min(picture.lookedAt.first, first);
    picture.lookedAt.last = std::max(picture.lookedAt.last, last);
}
inline bool WasLookedAt(const BandPicture &picture, int32_t y) {
    return y >= picture.lookedAt.first && y <= picture.lookedAt.last;
}
