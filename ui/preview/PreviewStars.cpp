#include "ui/preview/PreviewStars.h"

#include "render/RenderState.h"

#include <algorithm>

namespace {

// A stamp of a phase that no source has had yet may reach further than the others by a pixel.
constexpr int32_t kPhaseMargin = 2;

IntRect BoxOf(const StarStamp &stamp) {
    return stamp.count > 0 ? stamp.box : IntRect{};
}

IntRect BoxOf(const FlareStamp &stamp) {
    return stamp.built ? IntRect{-stamp.rings, -stamp.rings, stamp.rings + 1, stamp.rings + 1} : IntRect{};
}

template <typename Set> bool AddStamps(const Set &set, IntRect *box, bool isKnown) {
    for (const auto &stamp : set.stamps) {
        const IntRect reach = BoxOf(stamp);
        if (IsEmptyRect(reach))
            continue;
        *box = isKnown ? IntRect{std::min(box->left, reach.left), std::min(box->top, reach.top),
                                 std::max(box->right, reach.right), std::max(box->bottom, reach.bottom)}
                       : reach;
        isKnown = true;
    }
    return isKnown;
}

} // namespace

bool FindStarBox(IntRect *box) {
    IntRect found{};
    const bool isKnown = AddStamps(gRenderState.flares, &found, AddStamps(gRenderState.stars, &found, false));
    if (isKnown)
        *box = {found.left - kPhaseMargin, found.top - kPhaseMargin, found.right + kPhaseMargin,
                found.bottom + kPhaseMargin};
    return isKnown;
}

IntRect StarRect(const LightSource &source, const IntRect &box) {
    return {source.X + box.left, source.Y + box.top, source.X + box.right, source.Y + box.bottom};
}
