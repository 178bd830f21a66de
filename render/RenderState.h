// What is kept from render to render: the stamps with their tables, and the context that they were built
// under. It is written by the one thread that renders, while its workers are not running; unlocked.
#pragma once

#include "render/rows/RowLoops.h"
#include "render/shape/SoftFlare.h"
#include "render/shape/StampContext.h"
#include "render/stamp/StarStamp.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

constexpr int32_t kPhases = 4;                       // sub-pixel phases per axis, quarter pixels
constexpr int32_t kStampsPerSet = kPhases * kPhases; // indexed px × 4 + py

struct StarSet {
    StarStamp stamps[kStampsPerSet];
    StarTables tables;
};

struct FlareSet {
    FlareStamp stamps[kStampsPerSet];
    ValueTable values; // shared by the phases; empty until the first is built
};

// Build one stamp of a set; true when it is complete. A set without a builder makes a render fail. Apart from
// the state, which is large and all zero in the module's file.
struct StampBuilders {
    bool (*star)(StarStamp *stamp, int32_t px, int32_t py);
    bool (*flare)(FlareStamp *stamp, int32_t px, int32_t py);
};
extern StampBuilders gStampBuilders;

// The light source's own colours by rainbow state, kRainbowStates for each worker that draws.
struct ColorTables {
    int32_t workers;
    BlendColor *colors; // null for 0 workers
};

struct RenderState {
    StampContext context; // of the last render; the builders of both sets read it
    const std::atomic<uint8_t> *abort;
    StarSet stars;
    FlareSet flares;
    ColorTables colors;
};

extern RenderState gRenderState;

// Makes this the state's context, and empties the stamps that do not serve it. The stamps themselves are
// built when they are first needed.
void UpdateStamps(const StampContext &wanted);

size_t ColorBytes(int32_t workers);
void FreeColors(ColorTables *colors);

// The stamp of a phase, built when it holds nothing. That it could not be completed does not matter. The set
// must have a builder.
const StarStamp &NeedStarStamp(int32_t px, int32_t py);
const FlareStamp &NeedFlareStamp(int32_t px, int32_t py);

// Drops all stamps' entries and memo tables' contents; call at the start of each run, after the image
// geometry is known. FreeRenderState gives all memory back; both may be called at any time while no render
// runs.
void ResetRenderState();
void FreeRenderState();
