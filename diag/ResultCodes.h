// The host's 16-bit result codes that this filter stores, and the type that carries them.
#pragma once

#include <cstdint>

using HostResult = int16_t;

constexpr HostResult kNoError = 0;
constexpr HostResult kWriteErr = -20;
constexpr HostResult kParamErr = -50;
constexpr HostResult kMemFullErr = -108;
constexpr HostResult kUserCanceledErr = -128;
constexpr HostResult kErrMissingParameter = -1715;
constexpr HostResult kFilterBadParameters = -30100;
constexpr HostResult kErrPlugInHostInsufficient = -30900;
constexpr HostResult kErrPlugInPropertyUndefined = -30901;
constexpr HostResult kPersistentBlockObsolete = -30905;
