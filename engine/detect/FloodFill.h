// Takes a flat bright area out of detection.
#pragma once

#include "engine/detect/Detection.h"

// Marks the pixel (x, y) and everything connected to it sideways, up and down that is selected at all and
// whose colour is that of `reference` within an eighth. Takes the image lock. When memory runs out the fill
// stops, the failure is reported and kept in worker->result.
void FillFlatArea(WorkerContext *worker, int32_t x, int32_t y, const PixelSample &reference);
