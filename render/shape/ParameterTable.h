// The numeric parameters: everything about each that more than one room needs. Scripts, the command line, the
// dialog's fields, requests, clamping and the stamps' reuse go through this table; the terminology and the
// dialog's resources are held against it.
#pragma once

#include "render/shape/RenderSettings.h"

#include <cstdint>
#include <iterator>

// In the order in which scripts, fields and requests hold them.
enum Parameter : int32_t {
    kThreshold,
    kIntensity,
    kLength,
    kAngle,
    kNumberOfPoints,
    kSpikeSharpness,
    kColorSaturation,
    kRainbowIntensity,
    kRainbowFrequency,
    kSecondaryIntensity,
    kSoftFlareIntensity,
    kParameterCount,
};

// How scripts and the command line give a value. An angle is stored in tenths.
enum class ParameterUnit { kPercent, kDegrees, kCount };

// What has to be built anew when a value changes; each includes those before.
enum class StampUse { kNone, kStars, kStarsAndFlares };

struct ParameterInfo {
    Parameter parameter;
    int16_t RenderSettings::*setting;
    StampUse stamps;
    int16_t minimum, maximum; // of the stored integer
    int16_t defaultValue;
    ParameterUnit unit;
    uint32_t key;       // in scripts, four characters
    const char *option; // on the command line, behind "--"
    const char *help;   // what the program says of it
};

constexpr ParameterInfo kParameters[kParameterCount] = {
    {kThreshold, &RenderSettings::threshold, StampUse::kNone, 0, 100, 50, ParameterUnit::kPercent,
     0x54687368 /* Thsh */, "threshold", "how many lights get stars, by brightness"},
    {kIntensity, &RenderSettings::intensity, StampUse::kStars, 0, 100, 50, ParameterUnit::kPercent,
     0x496E746E /* Intn */, "intensity", "brightness of the stars"},
    {kLength, &RenderSettings::length, StampUse::kStarsAndFlares, 0, 100, 50, ParameterUnit::kPercent,
     0x4C6E6774 /* Lngt */, "length", "length of the spikes"},
    {kAngle, &RenderSettings::angle, StampUse::kStars, -900, 900, 150, ParameterUnit::kDegrees,
     0x416E676C /* Angl */, "angle", "turn of the stars, in degrees"},
    {kNumberOfPoints, &RenderSettings::numberOfPoints, StampUse::kStars, 1, 32, 6, ParameterUnit::kCount,
     0x6E756D50 /* numP */, "points", "number of spikes"},
    {kSpikeSharpness, &RenderSettings::spikeSharpness, StampUse::kStars, 0, 100, 50, ParameterUnit::kPercent,
     0x73707348 /* spsH */, "sharpness", "sharpness of the spikes"},
    {kColorSaturation, &RenderSettings::colorSaturation, StampUse::kNone, -100, 100, 30,
     ParameterUnit::kPercent, 0x53747274 /* Strt */, "saturation", "colour of the stars"},
    {kRainbowIntensity, &RenderSettings::rainbowIntensity, StampUse::kStars, 0, 100, 50,
     ParameterUnit::kPercent, 0x72627749 /* rbwI */, "rainbow", "rainbow along the spikes"},
    {kRainbowFrequency, &RenderSettings::rainbowFrequency, StampUse::kStars, 0, 100, 50,
     ParameterUnit::kPercent, 0x72627746 /* rbwF */, "rainbow-frequency", "how often its colours repeat"},
    {kSecondaryIntensity, &RenderSettings::secondaryIntensity, StampUse::kStars, 0, 100, 15,
     ParameterUnit::kPercent, 0x73737049 /* sspI */, "secondary", "brightness of the small spikes between"},
    {kSoftFlareIntensity, &RenderSettings::softFlareIntensity, StampUse::kNone, 0, 100, 30,
     ParameterUnit::kPercent, 0x73666C42 /* sflB */, "flare", "brightness of the soft glow"},
};

consteval bool IsParameterTableSound() {
    for (int32_t i = 0; i < kParameterCount; ++i) {
        const ParameterInfo &p = kParameters[i];
        if (p.parameter != i || !p.setting || !p.key || !p.option || !p.help || p.defaultValue < p.minimum ||
            p.defaultValue > p.maximum)
            return false;
        for (int32_t j = 0; j < i; ++j)
            if (kParameters[j].key == p.key || kParameters[j].setting == p.setting)
                return false;
    }
    return true;
}
static_assert(IsParameterTableSound(), "a parameter has no row, an incomplete one, or one of another place");

// Brings every field into its range (an unknown effect type becomes the Standard Star; a scale that is
// not a number, or outside 1..100000, becomes 100), so that no value from outside can divide by zero,
// overflow or hang.
void ClampRenderSettings(RenderSettings *settings);
