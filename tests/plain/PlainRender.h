// Whole renders in the plain form.
#pragma once

#include "tests/plain/PlainStamps.h"

namespace plain {

// Where a stamp goes: a pixel and the sub-pixel phase, each 0..3 quarter pixels.
struct StampPlace {
    int32_t x, y;
    int32_t px, py;
};

// Blends the phase's stamp, tinted, into the part of the target that lies in the output. A stamp without
// entries is built first; that it could not be completed does not matter. False when the set has no builder.
bool LayStamp(StampSet *set, const StampPlace &place, const Tint &tint, const IntRect &target,
              ImageBuffer *output);

struct RenderState {
    StampContext context; // of the last render; the builders of both sets read it
    StampSet stars, flares;
};

extern RenderState gRenderState;

// Makes the settings (clamped) with the present geometry, precision mode and floor the state's context, and
// empties the stamps that do not serve it. The stamps themselves are built when they are first laid.
void UpdateStamps(const RenderSettings &settings);

// Drops all stamps' entries and memo tables' contents; call at the start of each run, after the image
// geometry is known. FreeRenderState gives all memory back; both may be called at any time while no render
// runs.
void ResetRenderState();
void FreeRenderState();

// Renders `target` (document coordinates) into `output`, an image of the same mode and depth as `source`
// whose bounds hold the target. gPreciseMode and gFloor must be set. Light sources are in document pixels.
// `settings` must be clamped. False when *abort became non-zero between two sources, or a stamp set has no
// builder; what was blended so far stays. Renders never overlap: one thread at a time.
bool RenderEffect(const RenderSettings &settings, const ImageBuffer &source, const IntRect &target,
                  const LightSourceTableView &lightSources, const std::atomic<uint8_t> &abort,
                  ImageBuffer *output);

} // namespace plain
