// A star stamp: the pixels of one star (or flare) around its centre, built once for each sub-pixel phase and
// laid onto every light source of that phase.
#pragma once

#include <cstddef>
#include <cstdint>

struct StampEntry {
    int16_t dx, dy;     // pixel offset from the light source's pixel
    uint32_t factor[3]; // rainbow colour factors for red, green, blue; fractions
    uint32_t value;     // fraction
};
static_assert(sizeof(StampEntry) == 20);

// Owner of `entries`: the record; FreeStamp releases them.
struct StarStamp {
    int32_t count;
    int32_t minX, minY, maxX, maxY; // bounding box in whole pixels, half-open
    StampEntry *entries;
    uint64_t capacityBytes;
};

constexpr int32_t kPhases = 4;                       // sub-pixel phases per axis, quarter pixels
constexpr int32_t kStampsPerSet = kPhases * kPhases; // indexed px × 4 + py

// Sets of stamps and the function that builds one of them. A set without a builder makes a render fail.
struct StampSet {
    StarStamp stamps[kStampsPerSet];
    bool (*build)(StarStamp *stamp, int32_t px, int32_t py);
};

// Makes room for one more entry, growing by at least `stepBytes` and in proportion to what is there, so that
// filling stays linear. False when memory ran out; the stamp is then unchanged.
bool ReserveStampEntry(StarStamp *stamp, uint64_t stepBytes);
// Appends an entry and widens the box to hold it. The position is in quarter pixels; its pixel is that
// divided by 4, truncating toward zero, so that pixel 0 takes the positions -3..3. An entry whose pixel does
// not fit 16 bits is left out. False when memory ran out; the stamp is then unchanged.
bool AppendStampEntry(StarStamp *stamp, int32_t quarterX, int32_t quarterY, const uint32_t factor[3],
                      uint32_t value, uint64_t stepBytes);
// Count 0 and an empty box; the array is kept.
void EmptyStamp(StarStamp *stamp);
// Gives the array back and leaves an empty stamp.
void FreeStamp(StarStamp *stamp);
