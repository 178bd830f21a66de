// The table of the pairs. Every text limit is 4: the angle's edit takes -90 but not -90.0 typed whole, and
// that is meant so. The key letter in a tooltip is the text's own and not always the accelerator's.
#include "ui/fields/ParameterControls.h"

ParameterControl gParameterControls[kParameterControlCount] = {
    {0, 100, 1, 10, 50, 4, 1025, 1026,
     "Threshold (H) - Determine how many light sources, ranked by brightness, for which to create spikes",
     "Threshold (H) - Move right to increase the number of light sources given spikes", 0, 10},
    {0, 100, 1, 10, 50, 4, 1005, 1004, "Intensity (I) - Set the brightness of the primary spike effects",
     "Intensity (I) - Move right to increase the brightness of primary spikes", 0, 10},
    {0, 100, 1, 10, 50, 4, 1007, 1006, "Length (L) - Set the length of the spikes",
     "Length (L) - Move right to increase the length of the spikes", 0, 10},
    {-900, 900, 1, 100, 150, 4, 1009, 1008, "Angle (A) - Set the rotation angle of the spikes",
     "Angle (A) - Move right to rotate the spikes clockwise", 1, 10},
    {1, 32, 1, 8, 6, 4, 1011, 1010,
     "Number of Points (N) - Set the number of main spikes around a light source",
     "Number of Points (N) - Move right to increase the number of main spikes around a light source", 0, 2},
    {0, 100, 1, 10, 50, 4, 1022, 1024, "Spike Sharpness (S) - Set the fuzziness or sharpness of the spikes",
     "Spike Sharpness (S) - Move right to increase the sharpness of the spikes", 0, 10},
    {-100, 100, 1, 10, 30, 4, 1013, 1012,
     "Color Saturation (C) - Set the intensity of the color in the spikes",
     "Color Saturation (C) - Move right to increase the intensity of the color in the spikes", 0, 10},
    {0, 100, 1, 10, 50, 4, 1015, 1014,
     "Rainbow Intensity (R) - Set the brightness of the multicolored 'rainbow' effect in the spikes",
     "Rainbow Intensity (R) - Move right to increase the brightness of the multicolored 'rainbow' effect in "
     "the spikes",
     0, 10},
    {0, 100, 1, 10, 50, 4, 1017, 1016,
     "Rainbow Frequency (F) - Set how quickly the multicolored 'rainbow' effect changes color in the spikes",
     "Rainbow Frequency (F) - Move right to make the multicolored 'rainbow' effect change color more rapidly "
     "in the spikes",
     0, 10},
    {0, 100, 1, 10, 15, 4, 1019, 1018,
     "Secondary Spike Intensity (S) - Set the brightness of secondary central 'mini-spikes' around a light "
     "source",
     "Secondary Spike Intensity (S) - Move right to increase the brightness of secondary central "
     "'mini-spikes' around a light source",
     0, 10},
    {0, 100, 1, 10, 30, 4, 1021, 1020,
     "Soft Flare Intensity (Y) - Set the brightness of the soft flare around light sources",
     "Soft Flare Intensity (Y) - Move right to increase the brightness of the soft flare around light "
     "sources",
     0, 10},
};
