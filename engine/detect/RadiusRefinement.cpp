#include "engine/detect/RadiusRefinement.h"

#include "engine/detect/RadialProfile.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace {

constexpr int32_t kSizeIterations = 6;
constexpr int32_t kPositionPasses = 4;
constexpr double kRadiusStep = 0.125;
constexpr double kSmallestShrinking = 0.25;
constexpr double kContrastGain = 0.000001; // a move must gain more than this
constexpr double kAlwaysSettles = 8.0;     // up to this radius, a fit that does not settle is good enough

// A contrast that is measured again only when its index changes. A measurement that fails keeps the last
// value.
struct CachedContrast {
    ShapeRecord *shapes;
    int32_t count;
    int32_t measuredIndex;
    double value;
};

// False when the index is out of range.
bool UpdateContrast(const BandPicture &image, const LightSourcePosition &center, int32_t index,
                    CachedContrast *c) {
    if (index >= c->count)
        return false;
    if (index != c->measuredIndex) {
        MeasureContrast(c->shapes, c->count, index, image, center, &c->value);
        c->measuredIndex = index;
    }
    return true;
}

// The three contrasts of a size step: inside the spot, at its rim, and well outside.
struct SizeContrasts {
    CachedContrast inside, rim, outside;
};

SizeContrasts MakeSizeContrasts(const WorkerContext &worker) {
    return SizeContrasts{CachedContrast{worker.disks, worker.diskCount, -1, 0.0},
                         CachedContrast{worker.rings, worker.ringCount, -1, 0.0},
                         CachedContrast{worker.rings, worker.ringCount, -1, 0.0}};
}

bool UpdateSizeContrasts(const BandPicture &image, const LightSourcePosition &center, double radius,
                         SizeContrasts *c) {
    const int32_t k = std::max(static_cast<int32_t>(radius * 4 + 0.5), 0);
    return UpdateContrast(image, center, k / 2 + 1, &c->inside) &&
           UpdateContrast(image, center, k, &c->rim) && UpdateContrast(image, center, 2 * k + 1, &c->outside);
}

enum class SizeChange { kNone, kGrowth, kShrink };

// Changes the radius by one step, or not. The rim belongs to the spot while its contrast is within a quarter
// of the way from the inside to the outside.
SizeChange ChangeRadius(const SizeContrasts &c, double *radius) {
    const double p = c.inside.value, q = c.rim.value, s = c.outside.value;
    if (!(p > s))
        return SizeChange::kNone;
    if (q > p - (p - s) / 4) {
        if (*radius >= kLargestRadius)
            return SizeChange::kNone;
        *radius += kRadiusStep;
        return SizeChange::kGrowth;
    }
    if (*radius < kSmallestShrinking)
        return SizeChange::kNone;
    *radius -= kRadiusStep;
    return SizeChange::kShrink;
}

// True when the radius differs from what it was.
bool RefineSize(const WorkerContext &worker, const LightSourcePosition &center, double *radius) {
    const double before = *radius;
    SizeContrasts contrasts = MakeSizeContrasts(worker);
    SizeChange previous = SizeChange::kNone;
    for (int32_t i = 0; i < kSizeIterations; ++i) {
        if (!UpdateSizeContrasts(worker.picture, center, *radius, &contrasts))
            break;
        const SizeChange change = ChangeRadius(contrasts, radius);
        const bool turnedBack = change == SizeChange::kShrink && previous == SizeChange::kGrowth;
        if (change == SizeChange::kNone || turnedBack)
            break;
        previous = change;
    }
    return *radius != before;
}

// One quarter further along an axis, carrying into the whole pixels.
void StepQuarter(int32_t step, int32_t *whole, int32_t *quarter) {
    *quarter += step;
    if (*quarter > 3) {
        *quarter -= 4;
        ++*whole;
    } else if (*quarter < 0) {
        *quarter += 4;
        --*whole;
    }
}

LightSourcePosition Neighbor(LightSourcePosition p, const DirectionStep &step, bool inWholePixels) {
    if (inWholePixels) {
        p.X += step.dx;
        p.Y += step.dy;
    } else {
        StepQuarter(step.dx, &p.X, &p.XQuarter);
        StepQuarter(step.dy, &p.Y, &p.YQuarter);
    }
    return p;
}

// Whether two positions, both in whole pixels or both of any kind, are the same or neighbours.
bool AreNeighbors(const LightSourcePosition &a, const LightSourcePosition &b, bool inWholePixels) {
    const int32_t reach = inWholePixels ? 4 : 1; // quarters
    return std::abs(4 * (int64_t{a.X} - b.X) + a.XQuarter - b.XQuarter) <= reach &&
           std::abs(4 * (int64_t{a.Y} - b.Y) + a.YQuarter - b.YQuarter) <= reach;
}

// Finds the neighbouring position with the best rim contrast; false when none is better than *best. What was
// measured around the centre before this one, if there was one, cannot be better.
bool FindBetterPosition(const WorkerContext &worker, int32_t index, bool inWholePixels,
                        const LightSourcePosition &center, const LightSourcePosition *before,
                        LightSourcePosition *choice, double *best) {
    bool found = false;
    for (const DirectionStep &step : kDirectionSteps) {
        const LightSourcePosition position = Neighbor(center, step, inWholePixels);
        if (before && AreNeighbors(position, *before, inWholePixels))
            continue;
        double contrast;
        if (!MeasureContrast(worker.rings, worker.ringCount, index, worker.picture, position, &contrast) ||
            !(contrast > *best + kContrastGain))
            continue;
        *choice = position;
        *best = contrast;
        found = true;
    }
    return found;
}

// Where a position step came to rest.
struct RestingPlace {
    bool isKnown;
    int32_t index;
    bool inWholePixels;
    LightSourcePosition center;
};

bool IsAtRest(const RestingPlace &rest, int32_t index, bool inWholePixels,
              const LightSourcePosition &center) {
    return rest.isKnown && rest.index == index && rest.inWholePixels == inWholePixels &&
           rest.center.X == center.X && rest.center.XQuarter == center.XQuarter &&
           rest.center.Y == center.Y && rest.center.YQuarter == center.YQuarter;
}

// True when the centre moved. A step that would begin where the last one came to rest is not taken again.
bool RefinePosition(const WorkerContext &worker, double radius, LightSourcePosition *center,
                    RestingPlace *rest) {
    // Truncated where every other index of a radius is rounded: meant so.
    const auto index = static_cast<int32_t>(radius * 4);
    const bool inWholePixels = radius >= 0;
    if (IsAtRest(*rest, index, inWholePixels, *center))
        return false;
    double best = 0.0;
    MeasureContrast(worker.rings, worker.ringCount, index, worker.picture, *center, &best);
    LightSourcePosition before, choice;
    int32_t pass = 0;
    for (; pass < kPositionPasses; ++pass) {
        if (!FindBetterPosition(worker, index, inWholePixels, *center, pass > 0 ? &before : nullptr, &choice,
                                &best))
            break;
        before = *center;
        *center = choice;
    }
    *rest = RestingPlace{pass < kPositionPasses, index, inWholePixels, *center};
    return pass > 0;
}

} // namespace

LightSourcePosition NearestWholePixel(const LightSourcePosition &position) {
    return LightSourcePosition{position.X + (position.XQuarter >= 2 ? 1 : 0), 0,
                               position.Y + (position.YQuarter >= 2 ? 1 : 0), 0};
}

bool MeasureContrast(ShapeRecord *shapes, int32_t count, int32_t index, const BandPicture &image,
                     const LightSourcePosition &center, double *contrast) {
    ShapeStatistics statistics;
    if (index < 0 || index >= count || !shapes[index].sample(&shapes[index], image, center, &statistics))
        return false;
    *contrast = ShapeContrast(statistics);
    return true;
}

bool RefineRadius(const WorkerContext &worker, LightSourcePosition *center, double *radius) {
    if (*radius >= 0)
        *center = NearestWholePixel(*center);
    const auto limit = static_cast<int32_t>(*radius + 8);
    int32_t rounds = 0;
    RestingPlace rest{};
    bool changed = true;
    while (changed && rounds < limit) {
        const bool resized = RefineSize(worker, *center, radius);
        const bool moved = RefinePosition(worker, *radius, center, &rest);
        changed = resized || moved;
        ++rounds;
    }
    return rounds < limit || *radius <= kAlwaysSettles;
}
