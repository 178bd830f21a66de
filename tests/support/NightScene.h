// Generated night scenes for tests and benchmarks: a dark, slightly noisy sky with round lights of known
// places.
#pragma once

#include "engine/image/ImageBuffer.h"

#include <cstdint>
#include <vector>

struct SceneLight {
    double x, y;             // centre in document pixels; a pixel's centre is its index + 0.5
    double sigma;            // of the Gaussian, in pixels
    double red, green, blue; // peak over the sky, 0..1 and above (a light above 1 has a flat white core)
};

// `count` lights on a jittered grid, so that none hides another: sizes, brightnesses and colours vary. The
// same seed gives the same lights on every machine.
std::vector<SceneLight> MakeSceneLights(int32_t width, int32_t height, int32_t count, uint32_t seed);

// Paints the scene into a buffer of any mode and depth; the transparency plane, when there is one, becomes
// opaque. `noise` is the amplitude of the sky's noise, 0..1.
void PaintNightScene(const std::vector<SceneLight> &lights, double noise, uint32_t seed, ImageBuffer *image);
