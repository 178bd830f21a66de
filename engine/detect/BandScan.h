// One worker's share of the search.
#pragma once

#include "engine/detect/Detection.h"

// Scans the worker's band until its end or until the run is cancelled, and marks in what its picture shows.
// Any thread, while no other worker runs.
void ScanBand(WorkerContext *worker);

// The same for one of several workers that run at once, each on a thread of its own. What it finds may be
// incomplete or outdated until SettleBands (BandOrder.h).
void ScanBandAhead(WorkerContext *worker);

// Brings that to an end once all earlier bands are settled. Without memory the result says so.
void FinishAheadScan(WorkerContext *worker);
