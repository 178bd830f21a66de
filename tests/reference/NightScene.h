// Random night pictures for the detection's comparisons.
#pragma once

#include "tests/reference/Cases.h"

namespace cases {

enum class SceneFlavor { kSpots, kDiscs, kFlatAreas, kColored, kNoise, kPlateaus };
constexpr int kSceneFlavors = 6;

// Paints spots, discs, flat areas, edges and noise over the whole buffer, its transparency and its mask.
void PaintNightScene(Random *random, SceneFlavor flavor, const ImageBuffer &buffer);

} // namespace cases
