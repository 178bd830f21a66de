// The list of light sources found in the image: adding, merging, ranking.
#pragma once

#include "diag/ResultCodes.h"
#include "engine/image/PixelSample.h"
#include "engine/table/LightSource.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

// The one global table. Written by the initialization task after its workers have ended; read by other
// threads only after the task's completion event. Hide Effects changes it on the dialog's thread.
extern LightSourceTable *gLightSourceTable;

// Adds a source by the add rule: an exact duplicate or an overlapped smaller source is silently not added.
// Returns kNoError, or kMemFullErr when the table cannot grow (it is then unchanged).
HostResult AddLightSource(LightSourceTable *table, const LightSourcePosition &position, float radiusSquared,
                          uint32_t red, uint32_t green, uint32_t blue, bool enabled);
// Whether a pixel lies within a source of the table: its distance from the centre, quarters left aside, is
// not above the radius.
bool IsInsideLightSource(const LightSourceTable &table, int32_t x, int32_t y);
// Adds the worker's selected, normal sources to the global table, scaled to document pixels. Stops early when
// *tableCancel is set.
HostResult MergeWorkerTable(const LightSourceTable &workerTable, const AnalysisImage &image,
                            const std::atomic<uint8_t> &tableCancel);
// Normalises the colours, sets Brightness and sorts the global table, brightest first; equal ones keep their
// order. Does nothing when *tableCancel is set at the start.
void RankLightSources(const std::atomic<uint8_t> &tableCancel);

LightSourceTableView GetLightSourceTable();

void FreeTableRecords(LightSourceTable *table);

// Threshold in percent to the brightness cut level; 100 and above cut nothing.
uint32_t ThresholdCutLevel(int32_t threshold);
