// What a worker that scans ahead keeps, so that it can go back to any row of its band and begin anew there.
#pragma once

#include "engine/detect/Detection.h"

// Once, before anything else here. False without memory; ReleaseAheadScan may follow in any case.
bool PrepareAheadScan(WorkerContext *worker);
void ReleaseAheadScan(WorkerContext *worker);

// Around the scan of the row ahead.row; the second goes on to the next one.
void BeginRow(WorkerContext *worker);
void EndRow(WorkerContext *worker);

// Goes back to the row ahead.outdated: what was found and marked from there on is forgotten.
void GoBack(WorkerContext *worker);

// Hands a light to the worker's table, and keeps it for GoBack when the worker scans ahead. kMemFullErr when
// there is no memory for it.
HostResult AddFoundLight(const FoundLight &light, WorkerContext *worker);

// Forgets what the worker has found, and how it failed.
void EmptyWorkerTable(WorkerContext *worker);
