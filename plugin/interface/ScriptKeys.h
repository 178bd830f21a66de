// The scripting keys of the parameter set, in the order in which they are asked for and written.
#pragma once

#include "plugin/interface/HostDescriptors.h"

constexpr FourCharCode kKeyOutputSpikesOnly = 0x6F70734F;    // 'opsO'
constexpr FourCharCode kKeyEffect = 0x73744566;              // 'stEf'
constexpr FourCharCode kKeyThreshold = 0x54687368;           // 'Thsh'
constexpr FourCharCode kKeyIntensity = 0x496E746E;           // 'Intn'
constexpr FourCharCode kKeyLength = 0x4C6E6774;              // 'Lngt'
constexpr FourCharCode kKeyAngle = 0x416E676C;               // 'Angl'
constexpr FourCharCode kKeyNumberOfPoints = 0x6E756D50;      // 'numP'
constexpr FourCharCode kKeySpikeSharpness = 0x73707348;      // 'spsH'
constexpr FourCharCode kKeySaturation = 0x53747274;          // 'Strt'
constexpr FourCharCode kKeyRainbowIntensity = 0x72627749;    // 'rbwI'
constexpr FourCharCode kKeyRainbowFrequency = 0x72627746;    // 'rbwF'
constexpr FourCharCode kKeySecondaryIntensity = 0x73737049;  // 'sspI'
constexpr FourCharCode kKeySoftFlareBrightness = 0x73666C42; // 'sflB'

// Enumeration type of kKeyEffect.
constexpr FourCharCode kTypeEffect = 0x65665479; // 'efTy'

// Percent and degree values travel as doubles; one degree is ten units of the angle.
constexpr double kTenthsPerDegree = 10.0;
