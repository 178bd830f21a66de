// The tests and measurements that turn a bright pixel into a light source, or drop it.
#pragma once

#include "engine/detect/Detection.h"

// Analyses the candidate at (x, y), a pixel inside the bounds, and adds the light source to the worker's
// table when it passes every test.
void AnalyzeCandidate(WorkerContext *worker, int32_t x, int32_t y);

// Whether the brightness around a spot of this radius (pixels, at least 0) falls off as a light's does, and
// its centre lies inside the bounds.
bool PassesRingContrast(const WorkerContext &worker, const LightSourcePosition &center, double radius);

// The colour levels of a light source: its colour at the rim, scaled so that the strongest channel is 1,
// times its brightness. Precision as gPreciseMode says.
void MeasureColorLevels(const WorkerContext &worker, const LightSourcePosition &center, double radius,
                        uint32_t levels[3]);
