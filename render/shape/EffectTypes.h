// The effect types: what they are called, and which arms a star of each has. What else needs a list of them
// (dialog, command line, clamping) takes it from the table; the scripting terminology is held against it.
#pragma once

#include <cstdint>
#include <iterator>

// Effect types: four-character codes, first character in the high byte.
constexpr uint32_t kStandardStar = 0x65665430;  // 'efT0'
constexpr uint32_t kHollywoodStar = 0x65665431; // 'efT1'
constexpr uint32_t kReligiousCross = 0x65665432;
constexpr uint32_t kHyperStar = 0x65665433;
constexpr uint32_t kNorthStar = 0x65665434;
constexpr uint32_t kVectorStar = 0x65665435;
constexpr uint32_t kStarBurst = 0x65665436; // 'efT6'

struct EffectType {
    uint32_t code;
    const wchar_t *name;  // in the dialog, the terminology and on the command line
    const wchar_t *word;  // of the name, short for it on the command line
    int32_t presetPoints; // the Number of Points that it proposes
};
constexpr EffectType kEffectTypes[] = {
    {kStandardStar, L"Standard Star", L"standard", 6},  {kHollywoodStar, L"Hollywood Star", L"hollywood", 4},
    {kReligiousCross, L"Religious Cross", L"cross", 4}, {kHyperStar, L"Hyper Star", L"hyper", 14},
    {kNorthStar, L"North Star", L"north", 4},           {kVectorStar, L"Vector Star", L"vector", 8},
    {kStarBurst, L"Star Burst", L"burst", 14},
};
constexpr int32_t kEffectTypeCount = static_cast<int32_t>(std::size(kEffectTypes));

// Its index in the table; -1 for an unknown one.
constexpr int32_t FindEffectType(uint32_t code) {
    for (int32_t i = 0; i < kEffectTypeCount; ++i)
        if (kEffectTypes[i].code == code)
            return i;
    return -1;
}

// The Number of Points that an effect type proposes; 0 for an unknown one.
constexpr int32_t PresetPoints(uint32_t code) {
    const int32_t type = FindEffectType(code);
    return type < 0 ? 0 : kEffectTypes[type].presetPoints;
}

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

// The star-burst table: directions in whole degrees with their weights.
struct BurstRay {
    int16_t angle;
    int16_t weight;
};
constexpr int32_t kBurstRays = 42;
extern const BurstRay kStarBurstTable[kBurstRays];
