// The image, rendered and written back tile by tile: the next tile is drawn while the host takes the last
// one.
#pragma once

#include "diag/ResultCodes.h"
#include "engine/image/ImageBuffer.h"
#include "render/shape/RenderSettings.h"

// Draws into the image itself. The light source table, gPreciseMode and gFloor must be ready. Runs on the
// host's thread; no other runs any more on return. Whatever failed has been reported to the user.
HostResult RenderAndWriteTiles(const RenderSettings &settings, ImageBuffer *image);
