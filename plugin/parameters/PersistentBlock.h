// The parameter block that the host keeps between runs under this filter's scope, with the initial-settings
// file standing by for hosts that keep none. Needs locked handles and the installed accessor.
#pragma once

#include "diag/ResultCodes.h"

// Also the scope in the property list.
constexpr char kScopeGuid[] = "cb7c0ae0-5b05-43f7-9c55-faa95b3359ba";

void InstallParameterBlockAccessor();
// Ends what a run keeps for the block; it can be neither restored nor stored until the accessor is installed
// again.
void ReleasePersistentBlock();

// Start: brings the block of the last run into the current set; else the initial-settings file; else the
// defaults. Returns how the host's own block fared, which is no failure of the run: kNoError,
// kErrPlugInHostInsufficient without the suites, kErrPlugInPropertyUndefined without a block,
// kPersistentBlockObsolete for one of another version, or a failing call's code.
HostResult RestorePersistentBlock();
// Finish: gives the current set to the host, or else writes the file.
void StorePersistentBlock();
