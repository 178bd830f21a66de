// How a worker that scans ahead keeps up with the bands before its own.
#pragma once

#include "engine/detect/Detection.h"

// Takes over what earlier bands have marked since the last call; the caller holds the image lock. False when
// that changes what the worker has looked at, or there is no memory for it: the scan is then worth nothing.
bool TakeEarlierMarks(WorkerContext *worker);

// The same without the lock, and quick while there is no news.
bool KeepUpWithEarlierBands(WorkerContext *worker);

// Whether the worker looked at rows so far off that it may have missed marks in them.
bool HasMissedMarks(const WorkerContext &worker);

// Once, before the first StartOver.
void PrepareAheadScan(WorkerContext *worker);
// Takes back all that the worker has marked and found, and begins with what earlier bands have marked so far.
void StartOver(WorkerContext *worker);

// For a caller that holds the image lock: tells the other workers that this one's log has changed.
void PublishMarks(DetectionShared *shared);

void LockImage(const DetectionShared &shared);
void UnlockImage(const DetectionShared &shared);
