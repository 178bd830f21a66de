#include "ui/fields/ParameterTable.h"

#include "resources/DialogControlIds.h"

#include <iterator>

static_assert(std::size(kPairIds) == kParameterCount);

namespace {

// Every text limit is 4: the angle's edit takes -90 but not -90.0 typed whole, and that is meant so.
constexpr int16_t kArrowStep = 1, kTextLimit = 4;

consteval ParameterControl Row(Parameter parameter, const char *editTooltip, const char *trackbarTooltip,
                               int16_t pageStep = 10, int16_t ctrlStep = 10) {
    const ParameterInfo &info = kParameters[parameter];
    const int16_t decimals = info.unit == ParameterUnit::kDegrees ? 1 : 0;
    return {info.minimum,
            info.maximum,
            kArrowStep,
            pageStep,
            info.defaultValue,
            kTextLimit,
            static_cast<uint16_t>(kPairIds[parameter].edit),
            static_cast<uint16_t>(kPairIds[parameter].trackbar),
            editTooltip,
            trackbarTooltip,
            decimals,
            ctrlStep};
}

} // namespace

// By Parameter. The key letter in a tooltip is the text's own and not always the accelerator's.
ParameterControl gParameterControls[] = {
    Row(kThreshold,
        "Threshold (H) - Determine how many light sources, ranked by brightness, for which to create spikes",
        "Threshold (H) - Move right to increase the number of light sources given spikes"),
    Row(kIntensity, "Intensity (I) - Set the brightness of the primary spike effects",
        "Intensity (I) - Move right to increase the brightness of primary spikes"),
    Row(kLength, "Length (L) - Set the length of the spikes",
        "Length (L) - Move right to increase the length of the spikes"),
    Row(kAngle, "Angle (A) - Set the rotation angle of the spikes",
        "Angle (A) - Move right to rotate the spikes clockwise", 100),
    Row(kNumberOfPoints, "Number of Points (N) - Set the number of main spikes around a light source",
        "Number of Points (N) - Move right to increase the number of main spikes around a light source", 8,
        2),
    Row(kSpikeSharpness, "Spike Sharpness (S) - Set the fuzziness or sharpness of the spikes",
        "Spike Sharpness (S) - Move right to increase the sharpness of the spikes"),
    Row(kColorSaturation, "Color Saturation (C) - Set the intensity of the color in the spikes",
        "Color Saturation (C) - Move right to increase the intensity of the color in the spikes"),
    Row(kRainbowIntensity,
        "Rainbow Intensity (R) - Set the brightness of the multicolored 'rainbow' effect in the spikes",
        "Rainbow Intensity (R) - Move right to increase the brightness of the multicolored 'rainbow' effect "
        "in "
        "the spikes"),
    Row(kRainbowFrequency,
        "Rainbow Frequency (F) - Set how quickly the multicolored 'rainbow' effect changes color in the "
        "spikes",
        "Rainbow Frequency (F) - Move right to make the multicolored 'rainbow' effect change color more "
        "rapidly "
        "in the spikes"),
    Row(kSecondaryIntensity,
        "Secondary Spike Intensity (S) - Set the brightness of secondary central 'mini-spikes' around a "
        "light "
        "source",
        "Secondary Spike Intensity (S) - Move right to increase the brightness of secondary central "
        "'mini-spikes' around a light source"),
    Row(kSoftFlareIntensity,
        "Soft Flare Intensity (Y) - Set the brightness of the soft flare around light sources",
        "Soft Flare Intensity (Y) - Move right to increase the brightness of the soft flare around light "
        "sources"),
};
