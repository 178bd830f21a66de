// The two host handles that live between calls: the 40-byte parameters handle and the 1-byte data handle.
// Hosts may hand back handles of earlier runs, so a handle of the wrong size counts as absent.
#pragma once

#include "plugin/interface/HostTypes.h"

// Whether a handle holds `size` bytes, as far as the host knows.
bool IsHandleUsable(HostHandle handle, int32_t size);

// Parameters, and Prepare when a handle is absent: makes what is missing, locks both, resets the set to its
// defaults and asks for the dialog. kMemFullErr, kFilterBadParameters, or kErrPlugInHostInsufficient without
// the host's table.
HostResult SetUpHandles();
bool HaveBothHandles();
// Locks both and sets gParameters and gDialogPending. kFilterBadParameters when one is absent, kMemFullErr
// when the host cannot lock, kErrPlugInHostInsufficient without its table.
HostResult LockHandles();
// Unlocks what is locked, the data handle first.
void UnlockHandles();
