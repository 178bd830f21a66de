// A star stamp: the arms of one star, worked out once for each sub-pixel phase and laid onto every light
// source of that phase; and the tables that all arms share.
#pragma once

#include "render/rows/RowLoops.h"
#include "render/shape/ArmSpan.h"
#include "render/shape/EffectTypes.h"
#include "render/shape/Rainbow.h"
#include "render/shape/SpikeProfile.h"
#include "render/stamp/KeptRows.h"

#include <bitset>
#include <cstdint>

constexpr int32_t kMaxStampArms = kMaxArms + kBurstRays;

// Owner of `arms` and `kept`, room for kMaxStampArms or null: the record; FreeStamp releases them.
struct StarStamp {
    int32_t count; // arms, in drawing order
    IntRect box;   // pixels that they may cover
    Arm *arms;
    KeptArm *kept = nullptr; // of each arm, in the same block as `arms`; see KeptRows.h
    bool keepsRows = false;  // the stamp is laid often enough to keep them
};

// What a table of values along an arm depends on.
struct SpikeTableKey {
    SpikeProfileInputs inputs;
    uint32_t least, furthest;
};

// A bit for each block of distances; no arm is longer.
using DistanceBlocks = std::bitset<512>;

// The values along the arms' lengths, a table for each different fall-off; and where the context needs
// tables, the rainbow's state by distance, as far as the longest of them, both filled block by block
// (DistanceNeed.h). What a change of the settings
// leaves as it is serves the next star too. Owner of the tables: the record; DropStarTables releases them.
struct StarTables {
    int32_t count; // of tables; some may be empty
    SpikeTableKey keys[kMaxStampArms];
    ValueTable values[kMaxStampArms];
    bool isUsed[kMaxStampArms]; // by a stamp of the present context
    DistanceBlocks valuesFilled[kMaxStampArms];
    StampContext rainbow; // that the states and factors are for
    uint16_t *stateOfDistance;
    uint32_t stateCount;
    DistanceBlocks statesFilled;
    RainbowFactors factors[kRainbowStates];
    GlowFactors glowFactors[kRainbowStates]; // the same
    GlowRainbow glowRainbow;                 // with these, under the rainbow's context
};

// Appends an arm with its table. Nothing happens when the arm is too short or too faint. False when memory
// ran out; the stamp is then unchanged.
bool AddArm(const StampContext &context, StarTables *tables, int32_t px, int32_t py, const ArmShape &shape,
            const std::atomic<uint8_t> &abort, StarStamp *stamp);
// Count 0, an empty box and no kept rows; the arrays stay.
void EmptyStamp(StarStamp *stamp);
// Gives the arrays back and leaves an empty stamp.
void FreeStamp(StarStamp *stamp);
void DropStarTables(StarTables *tables);
// Before stamps are built under a context, while there are none: no table is used yet, and the rainbow is the
// context's.
void BeginStars(const StampContext &context, StarTables *tables);
// After a whole stamp has been built: gives back the tables that no stamp uses.
void DropUnusedTables(StarTables *tables);
// Bytes held by a stamp and by the tables.
int64_t StampBytes(const StarStamp &stamp);
int64_t TableBytes(const StarTables &tables);
