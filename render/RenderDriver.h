// The render driver: lays the stamps of every selected light source onto the image.
#pragma once

#include "engine/image/ImageBuffer.h"
#include "engine/image/WorkerThreads.h"
#include "engine/table/LightSourceTable.h"
#include "render/shape/RenderSettings.h"

#include <atomic>
#include <cstdint>

// Renders `target` (document coordinates) into `output`, an image of the same mode and depth as `source`
// whose bounds hold the target; or `source` itself, which is then drawn into. gPreciseMode and gFloor must be
// set. Light sources are in document pixels. `settings` are clamped. The `threads`, at most 16, share the
// rows; the picture does not depend on their number, and none of them runs any more on return. False when
// *abort became non-zero before the end, or a stamp set has no builder; what was blended so far stays.
// Renders never overlap: one thread at a time.
bool RenderEffect(const RenderSettings &settings, const ImageBuffer &source, const IntRect &target,
                  const LightSourceTableView &lightSources, const std::atomic<uint8_t> &abort,
                  ImageBuffer *output, const WorkerThreads &threads = kThisThreadOnly);
