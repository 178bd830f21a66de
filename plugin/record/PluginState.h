// What the frame keeps reachable for the rest of the filter while one selector runs. All of it is written and
// read on the host's thread only; the atomic flags are also read by others.
#pragma once

#include "plugin/interface/HostInterface.h"
#include "render/ParameterSet.h"

#include <atomic>
#include <cstdint>

// The host's records of the current call. Exactly one of the two is the call's record: About brings its own.
extern FilterRecord *gFilterRecord;
extern AboutRecord *gAboutRecord;
// The host's word for this filter, which holds the data handle; null when the host passed none.
extern intptr_t *gData;
// The host's result word; null only between calls.
extern HostResult *gResult;

// Contents of the two handles while they are locked, null otherwise.
extern ParameterSet *gParameters;
extern uint8_t *gDialogPending; // 1: the next Start shows the dialog

// Suites held, null otherwise.
extern const PropertyProcs *gPropertySuite;
extern const ErrorSuite *gErrorSuite;

// Raised when a run ends, whatever its outcome, so that every rendering loop stops; lowered when one starts.
extern std::atomic<uint8_t> gShuttingDown;

// The window that the host gives as parent, or else the thread's active one (an HWND; may still be null).
void *ParentWindow();
