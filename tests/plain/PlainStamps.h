// The renderer in its plain form: stamps are lists of loose entries, every entry is laid by reading, blending
// and writing one pixel, on one thread. The yardstick of the renderer's tests and of its benchmark; it shares
// the layouts, the angle and rainbow tables, the source tints and the output base with the renderer.
#pragma once

#include "engine/ImageBuffer.h"
#include "engine/LightSourceTable.h"
#include "render/PixelBlender.h"
#include "render/StampContext.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace plain {

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

// Distance of a point (dx, dy) quarter pixels away, to the nearest tenth of a quarter pixel. Components up to
// 10^8 quarter pixels.
uint32_t MeasureDistance(int32_t dx, int32_t dy);

// What a spike's fall-off depends on. `length` at least 1, `decay` at least 0, `scale` and `diagonal` above
// 0.
struct SpikeProfileInputs {
    int32_t length;
    int32_t decay;
    uint32_t brightness; // fraction
    double scale;        // percent
    int32_t diagonal;    // pixels
};

// Makes the profile of these inputs the current one; its memo is cleared when they differ from the last ones.
void SelectSpikeProfile(const SpikeProfileInputs &inputs);
// Value of the current profile at a distance, before the cross-section: a fraction.
uint32_t SpikeValueAt(uint32_t distance);
// Clears the memo and forgets the inputs.
void ResetSpikeProfile();

struct ArmShape {
    int32_t angle;          // tenths of a degree, any integer; 0 points up, clockwise
    double sharpnessFactor; // edge steepness, above 0
    double widthFactor;     // above 0
    int32_t length;         // length value; below 1 nothing is drawn
    int32_t decay;          // 0..100: the higher, the steeper the fall-off
    uint32_t brightness;    // fraction; below a quarter of the floor nothing is drawn
};

// Factors that all arms of a star share.
double StarSharpnessFactor(const StampContext &context);
double StarWidthFactor(const StampContext &context);
// A percentage of intensity as the brightness of an arm.
uint32_t SpikeBrightness(int32_t intensityPercent);

// Appends the arm's entries to the stamp of phase (px, py), each 0..3 quarter pixels. The angle tables must
// be built. False only when memory ran out, which is reported; what was drawn so far stays.
bool DrawArm(const StampContext &context, StarStamp *stamp, int32_t px, int32_t py, const ArmShape &arm);

// Draws the burst into the star's own stamp. The settings' secondary intensity and length are above 0. False
// when memory ran out (reported); the burst ends there.
bool DrawSecondarySpikes(const StampContext &context, StarStamp *stamp, int32_t px, int32_t py);

// Empties the stamp and draws the star of phase (px, py), each 0..3. False when memory ran out (reported);
// the stamp keeps what was drawn so far.
bool DrawStar(const StampContext &context, StarStamp *stamp, int32_t px, int32_t py);

// Empties the stamp and draws the flare of phase (px, py), each 0..3. False when memory ran out; the flare
// then ends where it stands, without a report.
bool DrawFlare(const StampContext &context, StarStamp *stamp, int32_t px, int32_t py);

// Value of the flare at a distance in tenths of a quarter pixel: a fraction. Memoised for the context's
// length, scale and diagonal; the rendering thread only.
uint32_t FlareValueAt(const StampContext &context, uint32_t distance);
// Clears the memo.
void ResetFlareValues();

} // namespace plain
