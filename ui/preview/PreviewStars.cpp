#include "ui/preview/PreviewStars.h"

#include "diag/BufferUsage.h"
#include "render/RenderState.h"
#include "ui/preview/PreviewProxies.h"

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

IntRect UniteRects(const IntRect &a, const IntRect &b) {
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
            std::max(a.bottom, b.bottom)};
}

template <typename Set> bool AddStamps(const Set &set, IntRect *box, bool isKnown) {
    for (const auto &stamp : set.stamps) {
        const IntRect reach = BoxOf(stamp);
        if (IsEmptyRect(reach))
            continue;
        *box = isKnown ? UniteRects(*box, reach) : reach;
        isKnown = true;
    }
    return isKnown;
}

} // namespace

bool AddStarBox(bool isKnown, IntRect *box) {
    IntRect found{};
    if (!AddStamps(gRenderState.flares, &found, AddStamps(gRenderState.stars, &found, false)))
        return isKnown;
    found = {found.left - kPhaseMargin, found.top - kPhaseMargin, found.right + kPhaseMargin,
             found.bottom + kPhaseMargin};
    *box = isKnown ? UniteRects(*box, found) : found;
    return true;
}

IntRect StarRect(const LightSource &source, const IntRect &box) {
    return {source.X + box.left, source.Y + box.top, source.X + box.right, source.Y + box.bottom};
}

bool CopyLightSources() {
    const LightSourceTableView table = GetLightSourceTable();
    if (gProxies.hasLightSources && gProxies.lightSourcesOf == gProxies.effectChanges)
        return true;
    const size_t bytes = table.count * sizeof(LightSource);
    auto *records = static_cast<LightSource *>(CountedAlloc(std::max<size_t>(bytes, 1)));
    if (!records)
        return false;
    CountedFree(gProxies.lightSources.records, gProxies.lightSourceBytes);
    std::copy_n(table.records, table.count, records);
    gProxies.lightSources = {records, table.count};
    gProxies.lightSourceBytes = std::max<size_t>(bytes, 1);
    gProxies.lightSourcesOf = gProxies.effectChanges;
    gProxies.hasLightSources = true;
    return true;
}
