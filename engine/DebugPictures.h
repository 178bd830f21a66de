// The pictures made of the kept analysis image.
#pragma once

#include "engine/DebugImages.h"
#include "engine/table/LightSource.h"

#include <cstdint>

// The pictures have the size of the kept image; something must be kept. `bgra` has four bytes for each pixel,
// from the top row down: blue, green, red, 255.
void DrawAnalysisPicture(const KeptImage &kept, uint8_t *bgra);
// The same: red where it is not selected, blue where it is not covered, striped green on flat areas.
void DrawShadedPicture(const KeptImage &kept, uint8_t *bgra);
// The lights as circles of their radius and colour on the darkened picture: dashed when hidden, grey when
// their brightness is below the cut and nothing else gives them a star. Lights are in document pixels.
void DrawLightsPicture(const KeptImage &kept, const LightSourceTableView &lights, uint32_t cutLevel,
                       uint8_t *bgra);
