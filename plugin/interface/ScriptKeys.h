// The scripting keys of the parameter set. These two come first; those of the numeric parameters follow, as
// the parameters' table says.
#pragma once

#include "plugin/interface/HostDescriptors.h"

constexpr FourCharCode kKeyOutputSpikesOnly = 0x6F70734F; // 'opsO'
constexpr FourCharCode kKeyEffect = 0x73744566;           // 'stEf'

// Enumeration type of kKeyEffect.
constexpr FourCharCode kTypeEffect = 0x65665479; // 'efTy'

// Percent and degree values travel as doubles; one degree is ten units of the angle.
constexpr double kTenthsPerDegree = 10.0;
