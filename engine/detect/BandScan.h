// One worker's share of the search.
#pragma once

#include "engine/detect/Detection.h"

// Scans the worker's band until its end or until the run is cancelled, and marks in what its picture shows.
// Any thread, while no other worker runs.
void ScanBand(WorkerContext *worker);

// The same for one of several workers that run at once, each on a thread of its own. What it finds may be
// incomplete or outdated until SettleBands.
void ScanBandAhead(WorkerContext *worker);

// After ScanBandAhead has ended for every worker that was started: makes each worker's table, and the marks
// in the shared picture, what the bands give when they are scanned one after another from the first to the
// last. A band that looked at rows which it saw otherwise is scanned again from the first of its rows that
// did, on the calling thread. Bands whose workers were not started stay without a scan. Returns early when
// the run is cancelled.
void SettleBands(DetectionShared *shared);
