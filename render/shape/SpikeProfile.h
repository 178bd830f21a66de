// Distances from a star's centre, and the brightness of a spike along its length: a table over the distance.
//
// Distances are counted in tenths of a quarter pixel.
#pragma once

#include "render/shape/FixedPower.h"

#include <cstddef>
#include <cstdint>

// Distance of a point (dx, dy) quarter pixels away, to the nearest tenth of a quarter pixel. Components up to
// 10^8 quarter pixels.
uint32_t MeasureDistance(int32_t dx, int32_t dy);

// What a spike's fall-off depends on. `length` at least 1, `decay` at least 1, `scale` and `diagonal` above
// 0.
struct SpikeProfileInputs {
    int32_t length;
    int32_t decay;
    uint32_t brightness; // fraction
    double scale;        // percent
    int32_t diagonal;    // pixels
};
bool SameProfileInputs(const SpikeProfileInputs &a, const SpikeProfileInputs &b);

// Value of a spike at a distance, before the cross-section: a fraction. One distance, straight from std::pow.
uint32_t ComputeSpikeValue(const SpikeProfileInputs &inputs, uint32_t distance);

// A spike's fall-off for the glow (RowLoops.h), as a fraction: peak × min(1, 8 × (1 + step ×
// distance)^exponent).
struct GlowCurve {
    double step;
    float exponent, peak;
};

// Values of one fall-off from distance 0 on, never rising; the last is 0 and stands for every distance from
// there on. A spike's may be missing, all or blocks of them: each can be worked out, and the glow needs none.
// Owner of `values`: the record; FreeValueTable releases them.
struct ValueTable {
    uint32_t *values;
    uint32_t count;            // at least 1; 0: nothing is described
    SpikeProfileInputs inputs; // of a spike, like the next two
    GlowCurve curve;
    FixedPower power;
    // First distance whose value is below (4 + s) / 4 × 2^e, at [4e + s]: how far a level reaches.
    static constexpr int32_t kLevels = 32 * 4;
    uint32_t reach[kLevels];
};

// A spike's value, whether the table holds it or not.
uint32_t SpikeValueAt(const ValueTable &table, uint32_t distance);
// Of a table that holds all of them.
inline uint32_t ValueAt(const ValueTable &table, uint32_t distance) {
    return table.values[distance < table.count ? distance : table.count - 1];
}
// No less than a spike's value, and hardly more.
double SpikeValueBound(const ValueTable &table, uint32_t distance);
// A distance from which on every value is below `level`; 0 has none and gives the table's end.
uint32_t ReachOfLevel(const ValueTable &table, uint32_t level);

// Tables along arms are filled in blocks of distances, where they are needed.
constexpr uint32_t kBlockDistances = 4096;

// Eight times the power of the distance, approximately, of a block: what spikes of one fall-off and any
// brightness have in common. All zero: empty.
struct SpikeLevels {
    SpikeProfileInputs inputs; // whatever their brightness
    uint32_t block, count;
    double level[kBlockDistances];
};

// The spike's values as far as they are not below `least` and not beyond `furthest`: everything but the
// values themselves.
ValueTable DescribeSpike(const SpikeProfileInputs &inputs, uint32_t least, uint32_t furthest);
// Fills in the values of a block, for which there must be room. `levels` serves the next table of the same
// fall-off.
void FillSpikeBlock(uint32_t block, SpikeLevels *levels, ValueTable *table);
void FreeValueTable(ValueTable *table);

// How many distances from 0 on have a value of at least `least`, at most `furthest` + 1; the values must not
// rise.
template <typename Value> uint32_t CountValues(uint32_t least, uint32_t furthest, Value valueAt) {
    uint32_t low = 0, high = furthest + 1; // everything before low counts, nothing from high on
    while (low < high) {
        const uint32_t middle = low + (high - low) / 2;
        if (valueAt(middle) >= least)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}
// Room for `count` values and the closing 0. False when memory ran out.
bool AllocateValueTable(uint32_t count, ValueTable *table);
// Sets `reach`.
void MeasureReach(uint32_t (*valueAt)(const ValueTable &table, uint32_t distance), ValueTable *table);
