// Fits the radius and the centre of a spot to the image.
#pragma once

#include "engine/detect/Detection.h"

constexpr double kLargestRadius = 64.0; // pixels of the analysis image

// The pixel nearest to a quarter-pixel position.
LightSourcePosition NearestWholePixel(const LightSourcePosition &position);

// Contrast of a shape of the array at an index; false when the index is out of range or the shape cannot
// measure.
bool MeasureContrast(ShapeRecord *shapes, int32_t count, int32_t index, const BandPicture &image,
                     const LightSourcePosition &center, double *contrast);

// Alternates size and position steps until neither changes anything. False when a large spot does not settle;
// the radius and the centre then have no meaning.
bool RefineRadius(const WorkerContext &worker, LightSourcePosition *center, double *radius);
