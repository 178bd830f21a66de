// Random scenes for whole renders: a picture, settings and light sources.
#pragma once

#include "tests/reference/Cases.h"

#include <vector>

namespace cases {

// One picture with its settings and light sources. The picture is at the settings' scale.
struct Scene {
    reference::RenderContext context;
    PictureKind kind;
    IntRect bounds; // of the picture, at the scale
    std::vector<LightSource> sources;
};

Scene PickScene(Random *random, int32_t longest);
// A rectangle that overlaps the bounds, or the bounds themselves.
IntRect PickTarget(Random *random, const IntRect &bounds);
Picture MakePicture(const PictureKind &kind, const IntRect &bounds);
LightSourceTableView ViewOf(std::vector<LightSource> *sources);

void ExpectSamePixels(const ImageBuffer &product, const ImageBuffer &expected);

} // namespace cases
