// The numeric parameters' scripting keys, told a second time.
#pragma once

#include "plugin/interface/ScriptKeys.h"

constexpr FourCharCode kKeyThreshold = 'Thsh', kKeyIntensity = 'Intn', kKeyLength = 'Lngt',
                       kKeyAngle = 'Angl', kKeyNumberOfPoints = 'numP', kKeySpikeSharpness = 'spsH',
                       kKeySaturation = 'Strt', kKeyRainbowIntensity = 'rbwI', kKeyRainbowFrequency = 'rbwF',
                       kKeySecondaryIntensity = 'sspI', kKeySoftFlareBrightness = 'sflB';
