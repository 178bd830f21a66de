// Builds the star stamp of one sub-pixel phase: the arms of the effect type, then the secondary spikes.
#pragma once

#include "render/stamp/StarStamp.h"

#include <atomic>
#include <cstdint>

// Empties the stamp and draws the star of phase (px, py), each 0..3. False when memory ran out (reported),
// the stamp then keeps what was drawn so far; or when *abort became non-zero, the stamp is then empty.
bool DrawStar(const StampContext &context, const std::atomic<uint8_t> &abort, StarTables *tables,
              StarStamp *stamp, int32_t px, int32_t py);

// The warning that memory ran out and something is missing from the picture: once a run for previews, and
// once for the final render. On the thread that renders.
void ReportLowMemory();
void ForgetLowMemory();
