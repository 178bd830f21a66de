// How the rows of the analysis image are shared out among workers.
#pragma once

#include "engine/image/Geometry.h"

#include <cstdint>

constexpr int32_t kMaxWorkers = 4;

// One worker a processor up to two, then two processors are left free, and never more than kMaxWorkers.
int32_t WorkerCountForProcessors(uint32_t processors);

// Cuts the bounds into `workers` (1..kMaxWorkers) bands of full width, from top to bottom. One row between
// two bands belongs to neither: meant so. Bands of an image with few rows are empty, upside down or reach
// past it.
void PlanBands(const IntRect &bounds, int32_t workers, IntRect *bands);
