// Distances from a star's centre, and the brightness of a spike along its length.
//
// Distances are counted in tenths of a quarter pixel. Both tables are memos: an entry is computed when it is
// first asked for, and 0 stands for "not yet". Unlocked; they belong to the thread that renders.
#pragma once

#include <cstdint>

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
