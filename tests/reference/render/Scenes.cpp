#include "tests/reference/render/Scenes.h"

#include "engine/image/FixedPoint.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace cases {

using reference::RenderContext;

Scene PickScene(Random *random, int32_t longest) {
    Scene scene{PickContext(random, longest), PickKind(random), {}, {}};
    RenderContext &context = scene.context;
    if (context.precision == reference::Precision::kPrecise)
        context.floor = FloorForBytesPerSample(scene.kind.bytesPerSample);
    const double scale = context.settings.scale / 100.0;
    // Far from the origin, a rounding of a zoomed position shows.
    const int64_t furthest = random->Chance(25) ? 30000 : 40;
    const auto left = static_cast<int32_t>(random->Pick(-20, furthest) * scale);
    const auto top = static_cast<int32_t>(random->Pick(-20, furthest) * scale);
    scene.bounds = {left, top, left + std::max(1, static_cast<int32_t>(context.width * scale)),
                    top + std::max(1, static_cast<int32_t>(context.height * scale))};
    const IntRect around{static_cast<int32_t>(left / scale) - 15, static_cast<int32_t>(top / scale) - 15,
                         static_cast<int32_t>(left / scale) + context.width + 15,
                         static_cast<int32_t>(top / scale) + context.height + 15};
    const int64_t count = random->Pick(1, 6);
    for (int64_t i = 0; i < count; ++i)
        scene.sources.push_back(PickSource(random, around, context.floor));
    return scene;
}

IntRect PickTarget(Random *random, const IntRect &bounds) {
    if (random->Chance(40))
        return bounds;
    const auto x0 = static_cast<int32_t>(random->Pick(bounds.left - 3, bounds.right - 1));
    const auto y0 = static_cast<int32_t>(random->Pick(bounds.top - 3, bounds.bottom - 1));
    return {x0, y0, static_cast<int32_t>(random->Pick(x0 + 1, bounds.right + 3)),
            static_cast<int32_t>(random->Pick(y0 + 1, bounds.bottom + 3))};
}

Picture MakePicture(const PictureKind &kind, const IntRect &bounds) {
    return Picture(kind.mode, kind.bytesPerSample, kind.transparencyPlanes, bounds, false);
}

LightSourceTableView ViewOf(std::vector<LightSource> *sources) {
    return {sources->data(), static_cast<uint32_t>(sources->size())};
}

void ExpectSamePixels(const ImageBuffer &product, const ImageBuffer &expected) {
    const int64_t difference = FirstDifference(product, expected);
    ASSERT_EQ(difference, -1) << int{product.pixels[difference]} << ", expected "
                              << int{expected.pixels[difference]};
}

} // namespace cases
