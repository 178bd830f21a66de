// What is kept from render to render: the stamps, and the context that they were built under. It belongs to
// the one thread that renders; unlocked.
#pragma once

#include "render/RenderDriver.h"
#include "render/StampContext.h"
#include "render/StarStamp.h"

struct RenderState {
    StampContext context; // of the last render; the builders of both sets read it
    StampSet stars, flares;
};

extern RenderState gRenderState;

// Makes the settings (clamped) with the present geometry, precision mode and floor the state's context, and
// empties the stamps that do not serve it. The stamps themselves are built when they are first laid.
void UpdateStamps(const RenderSettings &settings);
