// The seven effect types: which arms a star of each has.
#pragma once

#include <cstdint>

// One arm of a layout. The length may be 0 or less: nothing is drawn then.
struct ArmCall {
    int32_t angle; // tenths of a degree, any integer
    int32_t length;
    uint32_t brightness; // fraction
};

constexpr int32_t kMaxPoints = 32;
constexpr int32_t kMaxArms = kMaxPoints * 7 / 2; // Hollywood Star: four arms, then three, in turn

struct ArmList {
    int32_t count;
    ArmCall arms[kMaxArms];
};

// What a layout starts from.
struct StarLayout {
    uint32_t effectType;
    int32_t angle;          // tenths of a degree
    int32_t numberOfPoints; // 1..32; outside there are no arms
    int32_t length;         // length value of a full arm
    uint32_t brightness;    // of a full arm, a fraction
};

// The star's arms in drawing order. An unknown effect type has none.
ArmList LayoutStar(const StarLayout &star);

// The Number of Points that an effect type proposes; 0 for an unknown one.
int32_t PresetPoints(uint32_t effectType);

// The star-burst table: directions in whole degrees with their weights.
struct BurstRay {
    int16_t angle;
    int16_t weight;
};
constexpr int32_t kBurstRays = 42;
extern const BurstRay kStarBurstTable[kBurstRays];
