#include "ui/fields/ParameterTable.h"

#include "resources/DialogControlIds.h"

#include <iterator>

static_assert(std::size(kPairIds) == kParameterCount);

// Every text limit is 4: the angle's edit takes -90 but not -90.0 typed whole, and
// that is meant so. The key letter in a tooltip is the text's own and not always the accelerator's.
ParameterControl gParameterControls[kParameterControlCount] = {
    {0, 100, 1, 10, 50, 4, kPairIds[kThreshold].edit, kPairIds[kThreshold].trackbar,
     "Threshold (H) - Determine how many light sources, ranked by brightness, for which to create spikes",
     "Threshold (H) - Move right to increase the number of light sources given spikes", 0, 10},
    {0, 100, 1, 10, 50, 4, kPairIds[kIntensity].edit, kPairIds[kIntensity].trackbar,
     "Intensity (I) - Set the brightness of the primary spike effects",
     "Intensity (I) - Move right to increase the brightness of primary spikes", 0, 10},
    {0, 100, 1, 10, 50, 4, kPairIds[kLength].edit, kPairIds[kLength].trackbar,
     "Length (L) - Set the length of the spikes",
     "Length (L) - Move right to increase the length of the spikes", 0, 10},
    {-900, 900, 1, 100, 150, 4, kPairIds[kAngle].edit, kPairIds[kAngle].trackbar,
     "Angle (A) - Set the rotation angle of the spikes",
     "Angle (A) - Move right to rotate the spikes clockwise", 1, 10},
    {1, 32, 1, 8, 6, 4, kPairIds[kNumberOfPoints].edit, kPairIds[kNumberOfPoints].trackbar,
     "Number of Points (N) - Set the number of main spikes around a light source",
     "Number of Points (N) - Move right to increase the number of main spikes around a light source", 0, 2},
    {0, 100, 1, 10, 50, 4, kPairIds[kSpikeSharpness].edit, kPairIds[kSpikeSharpness].trackbar,
     "Spike Sharpness (S) - Set the fuzziness or sharpness of the spikes",
     "Spike Sharpness (S) - Move right to increase the sharpness of the spikes", 0, 10},
    {-100, 100, 1, 10, 30, 4, kPairIds[kColorSaturation].edit, kPairIds[kColorSaturation].trackbar,
     "Color Saturation (C) - Set the intensity of the color in the spikes",
     "Color Saturation (C) - Move right to increase the intensity of the color in the spikes", 0, 10},
    {0, 100, 1, 10, 50, 4, kPairIds[kRainbowIntensity].edit, kPairIds[kRainbowIntensity].trackbar,
     "Rainbow Intensity (R) - Set the brightness of the multicolored 'rainbow' effect in the spikes",
     "Rainbow Intensity (R) - Move right to increase the brightness of the multicolored 'rainbow' effect in "
     "the spikes",
     0, 10},
    {0, 100, 1, 10, 50, 4, kPairIds[kRainbowFrequency].edit, kPairIds[kRainbowFrequency].trackbar,
     "Rainbow Frequency (F) - Set how quickly the multicolored 'rainbow' effect changes color in the spikes",
     "Rainbow Frequency (F) - Move right to make the multicolored 'rainbow' effect change color more rapidly "
     "in the spikes",
     0, 10},
    {0, 100, 1, 10, 15, 4, kPairIds[kSecondaryIntensity].edit, kPairIds[kSecondaryIntensity].trackbar,
     "Secondary Spike Intensity (S) - Set the brightness of secondary central 'mini-spikes' around a light "
     "source",
     "Secondary Spike Intensity (S) - Move right to increase the brightness of secondary central "
     "'mini-spikes' around a light source",
     0, 10},
    {0, 100, 1, 10, 30, 4, kPairIds[kSoftFlareIntensity].edit, kPairIds[kSoftFlareIntensity].trackbar,
     "Soft Flare Intensity (Y) - Set the brightness of the soft flare around light sources",
     "Soft Flare Intensity (Y) - Move right to increase the brightness of the soft flare around light "
     "sources",
     0, 10},
};
