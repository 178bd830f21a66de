// Whole renders in the plain form.
#pragma once

#include "engine/ImageBuffer.h"
#include "engine/LightSourceTable.h"
#include "render/RenderSettings.h"

namespace plain {

// Forgets the stamps, which are kept from render to render as long as they serve.
void FreeRenderState();

// Renders `target` (document coordinates) into `output`, whose bounds hold it, as ::RenderEffect does.
void RenderEffect(const RenderSettings &settings, const ImageBuffer &source, const IntRect &target,
                  const LightSourceTableView &lightSources, ImageBuffer *output);

} // namespace plain
