// Whole renders in the plain form.
#pragma once

#include "engine/image/ImageBuffer.h"
#include "engine/table/LightSourceTable.h"
#include "render/RenderDriver.h"
#include "render/RenderState.h"
#include "render/shape/RenderSettings.h"

namespace plain {

// Forgets the stamps, which are kept from render to render as long as they serve.
void FreeRenderState();

// Renders `target` (document coordinates) into `output`, whose bounds hold it, as ::RenderEffect does.
void RenderEffect(const RenderSettings &settings, const ImageBuffer &source, const IntRect &target,
                  const LightSourceTableView &lightSources, ImageBuffer *output);

} // namespace plain
