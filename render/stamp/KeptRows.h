// Rows of an arm, kept as they were filled.
//
// Light sources of one phase lay the same rows again and again. A stamp that is laid often keeps them: the
// values and the rainbow's states, or the glow (RowLoops.h), of the pixels that can show at all, as far as a
// budget goes. That is a
// shortcut and no more: an arm that is not kept is worked out where it is laid, with the same values.
//
// Workers share what is kept. The first that needs an arm fills its rows; the others work the arm out for
// themselves until they are ready.
#pragma once

#include "render/rows/RowLoops.h"

#include <cstdint>

// A row's pixels lie side by side and end where the next row's begin.
struct KeptRow {
    int32_t from;   // pixel offset of its first pixel
    uint32_t first; // index of its first pixel
};

// The rows of one arm. All zero: nothing is kept yet. Owner of the block that the pointers point into: the
// record; DropKeptArm releases it.
struct KeptArm {
    uint32_t progress; // for KeepArm alone
    uint32_t level;    // smaller values are left out at the rows' ends
    PixelRange range;  // of the rows
    KeptRow *rows;     // one more than there are rows
    int32_t channels;  // of glow: 0 (values and states instead), 1 or 3
    uint32_t *values;
    uint16_t *states;
    float *glow; // each row's channels one after the other
    int64_t bytes;
};

// What an arm's rows are filled from, and how much of them.
struct ArmFilling {
    const Arm *arm;
    const uint16_t *stateOfDistance;
    bool precise;
    uint32_t level; // values below it never show, whatever the light source
    bool glows;
    const GlowRainbow *rainbow; // of the glow
    const std::atomic<uint8_t> &abort;
};

// Whether the arm's rows, with all values of at least `filling.level`, are ready; fills them when nobody else
// does, nothing is aborted, and there is room for them. Any thread.
bool KeepArm(const ArmFilling &filling, KeptArm *kept);
// Gives the rows back; no other thread may use them.
void DropKeptArm(KeptArm *kept);
