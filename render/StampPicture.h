// A picture of one light's star and flare, as the renderer lays them.
#pragma once

#include "engine/image/Geometry.h"
#include "render/shape/RenderSettings.h"

#include <cstdint>

// The area in which something can be seen of the star and the flare of phase 0,0, with a little black around
// it and the light's pixel at (0, 0): never empty, and cut at kStampPictureReach pixels in each direction.
// gImageGeometry, gPreciseMode and gFloor must be set, as for a render, and no render may be on; the caller
// frees the render state afterwards.
IntRect FindStampArea(const RenderSettings &settings);
constexpr int32_t kStampPictureReach = 1200;

// Lays the star and the flare of a white light of full strength on black. `bgra` has four bytes for each
// pixel of the area, from the top row down: blue, green, red, 255. False when memory ran out; it is then left
// alone.
bool DrawStampPicture(const RenderSettings &settings, const IntRect &area, uint8_t *bgra);
