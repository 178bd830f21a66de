// How a worker that scans ahead keeps up with the bands before its own.
#pragma once

#include "engine/detect/Detection.h"

// Takes over what earlier bands have marked or taken back since the last call. False when that changes what
// the worker has looked at, and ahead.outdated then says from which row on; or without the memory for it, as
// the result then says.
bool KeepUpWithEarlierBands(WorkerContext *worker);

// Whether there is anything to take over; the caller holds the image lock and nobody scans the band.
bool LagsBehind(const WorkerContext &worker);

// Marks once more what is marked in the rows: pixels there have been restored.
void ShowMarksAgain(RowRange rows, WorkerContext *worker);

// For a caller that holds the image lock: tells the other workers that this one's log has changed.
void PublishMarks(DetectionShared *shared);

void LockImage(const DetectionShared &shared);
void UnlockImage(const DetectionShared &shared);
