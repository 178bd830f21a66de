// Brings what several workers found ahead into the order of their bands.
#pragma once

#include "engine/detect/Detection.h"

// After ScanBandAhead has ended for every worker that was started: makes each worker's table, and the marks
// in the shared picture, what the bands give when they are scanned one after another from the first to the
// last. A band that looked at rows which it saw otherwise is scanned again from the first of its rows that
// did, on the calling thread. Bands whose workers were not started stay without a scan. Returns early when
// the run is cancelled.
void SettleBands(DetectionShared *shared);
